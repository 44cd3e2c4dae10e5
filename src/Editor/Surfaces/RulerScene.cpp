#include "Editor/Surfaces/RulerScene.h"

namespace kiv {
namespace {

constexpr double stripReach = 7;  // logical pixels to both sides of a mark that has moved
constexpr double flagReach = 14;  // a marker's flag and a loop's tab reach further

}  // namespace

RulerScene rulerScene(const AudioEditorState &state, ViewSize size, const RulerScene &last) {
    const std::string unit = state.timeUnit == AudioEditorTimeUnit::samples ? "Smp" : "Sec";
    RulerScene scene{rulerGeometry(state, size), state.buffer.sampleRate(), unit, {}, {}, state.editLoopEnabled};
    const bool same =
        last.geometry == scene.geometry && last.unit == unit && last.sampleRate == scene.sampleRate && !last.ticks.empty();
    scene.ticks = same ? last.ticks : timeTicks(state, scene.geometry.axis, scene.geometry.wholeColumns(), size.textScale());
    scene.marks = viewMarks(state, scene.geometry.axis, scene.geometry.wholeColumns());
    scene.marks.selection.reset();
    return scene;
}

Damage rulerDamage(const RulerScene &before, const RulerScene &now) {
    Damage damage;
    damage.everything = before.geometry != now.geometry || before.unit != now.unit || before.ticks != now.ticks ||
                        before.editsLoop != now.editsLoop;
    if (damage.everything || before == now) return damage;
    const double scale = now.geometry.size.scale;
    ViewMarks flags = before.marks, heads = before.marks;
    flags.cursor = now.marks.cursor;
    flags.playheads = now.marks.playheads;
    heads.markers = now.marks.markers;
    heads.loop = now.marks.loop;
    addMarksDamage(damage, flags, now.marks, devicePixels(flagReach, scale));
    addMarksDamage(damage, heads, now.marks, devicePixels(stripReach, scale));
    return damage;
}

}  // namespace kiv
