#include "Editor/Surfaces/WaveformScene.h"

#include <cmath>

#include "Editor/Surfaces/LevelSheetScene.h"
#include "Editor/Surfaces/TimeMarks.h"

namespace kiv {
namespace {

constexpr double stripReach = 7;  // logical pixels to both sides of a mark that has moved
constexpr double playheadWidth = 2;

// The factor by which an open dialog would scale the active range; none when it would not change it.
std::optional<double> dialogFactor(const AudioEditorState &state, FrameRange active) {
    double factor = 1;
    if (state.dialog == Dialog::gain) factor = std::pow(10.0, state.gainDb / 20);
    if (state.dialog == Dialog::normalize) {
        const auto peak = double(peakOfRange(state.buffer, state.peaks, active));
        if (peak > 0 && std::isfinite(peak)) factor = std::pow(10.0, state.normalizeDb / 20) / peak;
    }
    return factor == 1 ? std::nullopt : std::optional(factor);
}

std::optional<WaveformPreview> previewOf(const AudioEditorState &state, const WaveformGeometry &geometry) {
    if (!state.dialog || state.buffer.isEmpty()) return std::nullopt;
    const FrameRange active = state.selection.value_or(FrameRange{0, state.buffer.frames()});
    const auto factor = dialogFactor(state, active);
    if (!factor) return std::nullopt;
    const PixelSpan columns{geometry.axis.columnOf(double(active.lo)), geometry.axis.columnOf(double(active.hi))};
    return WaveformPreview{*factor, intersected(columns, {0, geometry.columns()})};
}

void addPreview(Damage &damage, const std::optional<WaveformPreview> &preview) {
    if (preview && !preview->columns.isEmpty()) damage.strips.push_back(preview->columns);
}

void addHover(Damage &damage, const std::optional<int> &hover, int reach) {
    if (hover) damage.add(*hover, reach);
}

// The end stands where any mark of its frame would, at the view's right end in the last column.
int selectionEnd(const WaveformScene &scene) {
    const int columns = scene.geometry.columns(), hi = scene.marks.selection->hi;
    return hi == columns ? columns - hairline(scene.geometry.size.scale) : hi;
}

}  // namespace

WaveformScene waveformScene(const AudioEditorState &state, ViewSize size, const WaveformViewState &view) {
    WaveformScene scene;
    scene.geometry = waveformGeometry(state, size);
    scene.generation = state.generation;
    scene.powersRevision = view.powersRevision;
    scene.isEmpty = isKnownEmpty(state);
    scene.timeLines = timeLines(state, scene.geometry.axis, scene.geometry.columns(), size.textScale());
    scene.marks = viewMarks(state, scene.geometry.axis, scene.geometry.columns());
    scene.editsLoop = state.editLoopEnabled;
    scene.preview = previewOf(state, scene.geometry);
    if (view.pointer) scene.pointed = hoverAt(scene.geometry, view.pointer->x, view.pointer->y, state.buffer.frames());
    if (view.pointer && !view.isButtonDown) scene.hover = pixelAt(view.pointer->x);
    scene.isFramed = view.dropFrame || view.keyFocus;
    return scene;
}

Damage waveformDamage(const WaveformScene &before, const WaveformScene &now) {
    Damage damage;
    damage.everything = before.geometry != now.geometry || before.generation != now.generation ||
                        before.powersRevision != now.powersRevision || before.timeLines != now.timeLines ||
                        before.isFramed != now.isFramed || before.editsLoop != now.editsLoop;
    if (damage.everything || before == now) return damage;
    const int reach = devicePixels(stripReach, now.geometry.size.scale);
    addMarksDamage(damage, before.marks, now.marks, reach);
    if (before.preview != now.preview) {
        addPreview(damage, before.preview);
        addPreview(damage, now.preview);
    }
    if (before.hover != now.hover) {
        addHover(damage, before.hover, reach);
        addHover(damage, now.hover, reach);
    }
    return damage;
}

std::vector<OverlayLine> overlayLines(const WaveformScene &scene) {
    using Kind = OverlayLine::Kind;
    const double scale = scene.geometry.size.scale;
    const int hair = hairline(scale), thick = devicePixels(playheadWidth, scale);
    const ViewMarks &marks = scene.marks;
    const int columns = scene.geometry.columns();
    const auto at = [&](int column) { return lineAt(column, hair, columns); };
    std::vector<OverlayLine> lines;
    if (marks.loop) {
        lines.push_back({Kind::loop, at(marks.loop->lo)});
        lines.push_back({Kind::loop, at(marks.loop->hi)});
    }
    for (const int marker : marks.markers) lines.push_back({Kind::marker, at(marker)});
    if (marks.selection) {
        lines.push_back({Kind::selectionEdge, at(marks.selection->lo)});
        lines.push_back({Kind::selectionEdge, at(selectionEnd(scene))});
    }
    lines.push_back({Kind::cursor, at(marks.cursor)});
    for (const int head : marks.playheads) lines.push_back({Kind::playhead, lineAt(head, thick, columns, thick / 2)});
    if (scene.hover) lines.push_back({Kind::hover, at(*scene.hover)});
    return lines;
}

}  // namespace kiv
