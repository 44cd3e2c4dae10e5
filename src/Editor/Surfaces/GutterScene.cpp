#include "Editor/Surfaces/GutterScene.h"

#include "Editor/AudioEditorCore/AudioEditorLevelGrid.h"

namespace kiv {
namespace {

std::string channelName(std::size_t channel, std::size_t channels) {
    if (channels == 2) return channel == 0 ? "L" : "R";
    return std::to_string(channel + 1);
}

}  // namespace

GutterScene gutterScene(const AudioEditorState &state, ViewSize size) {
    const WaveformGeometry geometry = waveformGeometry(state, size);
    GutterScene scene{size, {}, {}, {}};
    for (std::size_t i = 0; i < geometry.lanes.size(); ++i) {
        const WaveLane &lane = geometry.lanes[i];
        for (const LevelMark &mark : levelMarks(geometry, lane))
            scene.levels.push_back({mark.row + 0.5, AudioEditorLevelGrid::label(mark.db)});
        if (geometry.lanes.size() > 1) scene.channels.push_back({double(lane.rows.lo), channelName(i, geometry.lanes.size())});
        if (i > 0) scene.edges.push_back({geometry.lanes[i - 1].rows.hi, lane.rows.lo});
    }
    return scene;
}

}  // namespace kiv
