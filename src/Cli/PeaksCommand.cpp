#include "Cli/Commands.h"
#include "Cli/Interrupt.h"
#include "Cli/Reading.h"
#include "Editor/AudioEditorCore/AudioEditorPeaks.h"

namespace kiv::Cli {

namespace {

void writeLevels(JsonWriter &json, std::string_view name, const std::vector<std::vector<float>> &channels) {
    json.key(name).beginList();
    for (const std::vector<float> &channel : channels) {
        json.beginList();
        for (const float level : channel) json.value(level);
        json.endList();
    }
    json.endList();
}

std::string asJson(const AudioEditorPeaks &peaks, JsonWriter::Layout layout) {
    JsonWriter json(layout);
    json.beginObject().field("blockSize", AudioEditorPeaks::blockSize);
    writeLevels(json, "mins", peaks.mins);
    writeLevels(json, "maxs", peaks.maxs);
    return json.endObject().take();
}

// A line a block: its first frame, then the lowest and highest sample of each channel.
std::string asText(const AudioEditorPeaks &peaks) {
    std::string text;
    for (std::int64_t block = 0; block < peaks.blocks(); ++block) {
        text += std::to_string(block * AudioEditorPeaks::blockSize);
        for (std::size_t channel = 0; channel < peaks.mins.size(); ++channel)
            text += " " + shortestText(peaks.mins[channel][std::size_t(block)]) + " " +
                    shortestText(peaks.maxs[channel][std::size_t(block)]);
        text += "\n";
    }
    return text;
}

}  // namespace

std::string peaks(const PeaksCall &call, const DocumentServices &services) {
    Interrupt::install();
    const AudioEditorPeaks peaks(readNow(services, call.file).buffer);
    return call.json ? asJson(peaks, *call.json) : asText(peaks);
}

}  // namespace kiv::Cli
