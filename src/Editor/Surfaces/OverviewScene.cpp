#include "Editor/Surfaces/OverviewScene.h"

namespace kiv {
namespace {

constexpr double stripReach = 3;  // logical pixels to both sides of a mark or an edge of the box that has moved

void addBox(Damage &damage, const OverviewScene &before, const OverviewScene &now, int reach) {
    const auto &a = before.geometry.box, &b = now.geometry.box;
    if (a == b) return;
    if (!a || !b) damage.everything = true;
    if (damage.everything) return;
    // The corners are rounded, so that an edge brings its neighbourhood along.
    damage.strips.push_back({std::min(a->lo, b->lo) - reach, std::max(a->lo, b->lo) + 3 * reach});
    damage.strips.push_back({std::min(a->hi, b->hi) - 3 * reach, std::max(a->hi, b->hi) + reach});
}

}  // namespace

OverviewScene overviewScene(const AudioEditorState &state, ViewSize size, std::int64_t powersRevision) {
    OverviewScene scene{overviewGeometry(state, size), state.generation, powersRevision, {}};
    scene.marks = viewMarks(state, scene.geometry.axis, scene.geometry.wholeColumns());
    return scene;
}

Damage overviewDamage(const OverviewScene &before, const OverviewScene &now) {
    Damage damage;
    if (before == now) return damage;
    OverviewGeometry sameBox = before.geometry;
    sameBox.box = now.geometry.box;
    damage.everything =
        sameBox != now.geometry || before.generation != now.generation || before.powersRevision != now.powersRevision;
    if (damage.everything) return damage;
    const int reach = devicePixels(stripReach, now.geometry.size.scale);
    addBox(damage, before, now, reach);
    addMarksDamage(damage, before.marks, now.marks, reach);
    if (before.showsCursor() != now.showsCursor()) damage.add(now.marks.cursor, reach);
    return damage;
}

std::string spokenView(const AudioEditorState &state) {
    const double half = visibleFrames(state.view, state.buffer.frames()) / 2;
    const auto time = [&](double frame) {
        return format(state.timeUnit, std::clamp(frame, 0.0, double(state.buffer.frames())), state.buffer.sampleRate());
    };
    return "In view " + time(state.view.centerFrame - half) + " – " + time(state.view.centerFrame + half);
}

}  // namespace kiv
