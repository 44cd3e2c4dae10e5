#include <cmath>

#include "Cli/Commands.h"
#include "Cli/Interrupt.h"
#include "Cli/Reading.h"
#include "Editor/AudioEditorCore/AudioEditorTimeUnit.h"
#include "Support/DecimalText.h"

namespace kiv::Cli {

namespace {

const char *containerName(AudioContainer container) {
    switch (container) {
        case AudioContainer::wav:
            return "wav";
        case AudioContainer::aiff:
            return "aiff";
        case AudioContainer::aifc:
            return "aifc";
        case AudioContainer::coreAudio:
            return "coreAudio";
    }
    return "";
}

const char *kindName(AudioFilePositionField::Kind kind) {
    switch (kind) {
        case AudioFilePositionField::Kind::frame:
            return "frame";
        case AudioFilePositionField::Kind::inclusiveEnd:
            return "inclusiveEnd";
        case AudioFilePositionField::Kind::length:
            return "length";
        case AudioFilePositionField::Kind::real:
            return "real";
    }
    return "";
}

void writeEncoding(JsonWriter &json, const std::optional<AudioSampleEncoding> &encoding) {
    json.key("encoding");
    if (!encoding) {
        json.value(nullptr);
        return;
    }
    json.beginObject();
    json.field("kind", encoding->kind == AudioSampleEncoding::Kind::integer ? "int" : "float");
    json.field("bytes", encoding->bytes).field("validBits", encoding->validBits);
    json.field("bigEndian", encoding->bigEndian).field("unsigned8", encoding->unsigned8);
    json.endObject();
}

void writeField(JsonWriter &json, const AudioFilePositionField &field) {
    json.beginObject().field("offset", field.offset).field("index", field.index).field("kind", kindName(field.kind));
    if (field.kind == AudioFilePositionField::Kind::length) json.field("from", field.from);
    json.field("bigEndian", field.bigEndian).endObject();
}

void writeChunks(JsonWriter &json, const std::vector<AudioFileChunk> &chunks) {
    json.key("chunks").beginList();
    for (const AudioFileChunk &chunk : chunks) {
        json.beginObject().field("id", displayText(chunk.id)).field("size", chunk.sizeInFile).key("fields").beginList();
        for (const AudioFilePositionField &field : chunk.fields) writeField(json, field);
        json.endList().endObject();
    }
    json.endList();
}

void writeFrames(JsonWriter &json, std::string_view name, const std::vector<std::int64_t> &frames) {
    json.key(name).beginList();
    for (const std::int64_t frame : frames) json.value(frame);
    json.endList();
}

void writeLoop(JsonWriter &json, const AudioFileContents &contents, std::optional<FrameRange> range) {
    json.key("loop");
    if (contents.loop) {
        json.beginObject().field("start", contents.loop->start).field("end", contents.loop->end).endObject();
    } else {
        json.value(nullptr);
    }
    json.key("loopRange");
    if (range) {
        json.beginList().value(range->lo).value(range->hi).endList();
    } else {
        json.value(nullptr);
    }
}

using Summary = AudioFileCodec::AudioFileSummary;

std::string asJson(const std::string &path, const Summary &summary, JsonWriter::Layout layout) {
    const AudioFileContents &contents = summary.contents;
    const AudioFileFormat &format = contents.format;
    const AudioFileEditorPositions shown = editorPositions(contents);
    JsonWriter json(layout);
    json.beginObject().field("path", path).field("container", containerName(format.container));
    json.field("typeName", format.typeName).field("bitsDescription", format.bitsDescription);
    json.field("fileExtension", format.fileExtension).field("sampleRate", format.sampleRate);
    writeEncoding(json, format.encoding);
    json.field("channels", contents.buffer.channels()).field("frames", summary.frames);
    json.field("bufferRate", contents.buffer.sampleRate());
    json.field("missingFrames", contents.missingFrames).field("damagedFrames", contents.damagedFrames);
    json.field("isCutOff", contents.isCutOff);
    writeChunks(json, contents.chunks);
    writeFrames(json, "positions", contents.positions);
    writeFrames(json, "markers", shown.markers);
    writeLoop(json, contents, shown.loop);
    json.field("canSaveInPlace", contents.canSaveInPlace());
    json.key("flacMetadata").beginList();
    for (const FlacMetadataBlock &block : contents.flacMetadata)
        json.beginObject().field("type", block.type).field("size", block.data.size()).endObject();
    return json.endList().endObject().take();
}

std::string rateText(double rate) { return decimalText(rate, rate == std::floor(rate) ? 0 : 3) + " Hz"; }

std::string asText(const std::string &path, const Summary &summary) {
    const AudioFileContents &contents = summary.contents;
    const AudioEditorBuffer &buffer = contents.buffer;
    const AudioFileEditorPositions shown = editorPositions(contents);
    std::string text = path + "\n  " + contents.format.typeName + ", " +
                       (contents.format.bitsDescription.empty() ? "" : contents.format.bitsDescription + ", ") +
                       rateText(contents.format.sampleRate) + ", " + std::to_string(buffer.channels()) +
                       (buffer.channels() == 1 ? " channel\n" : " channels\n");
    const auto length = [&](const char *what, std::int64_t frames, const char *more) {
        text += std::string("  ") + what + std::to_string(frames) + " frames, " +
                format(AudioEditorTimeUnit::seconds, double(frames), buffer.sampleRate()) + more + "\n";
    };
    length("length   ", summary.frames, "");
    if (contents.missingFrames > 0)
        length("missing  ", contents.missingFrames,
               contents.isCutOff ? " or more: the file ends early" : ": the file ends early");
    else if (contents.isCutOff)
        text += "  missing  an unknown length: the file ends early\n";
    if (contents.damagedFrames > 0) length("damaged  ", contents.damagedFrames, ": they could not be read and are silent");
    if (shown.loop) text += "  loop     " + std::to_string(shown.loop->lo) + " " + std::to_string(shown.loop->hi) + "\n";
    if (!shown.markers.empty()) {
        text += "  markers ";
        for (const std::int64_t frame : shown.markers) text += " " + std::to_string(frame);
        text += "\n";
    }
    for (const AudioFileChunk &chunk : contents.chunks)
        text += "  chunk    " + displayText(chunk.id) + " " + std::to_string(chunk.sizeInFile) + "\n";
    return text;
}

}  // namespace

std::string info(const InfoCall &call, const DocumentServices &services) {
    Interrupt::install();
    const Summary summary = summarizeNow(services, call.file);
    return call.json ? asJson(call.file, summary, *call.json) : asText(call.file, summary);
}

}  // namespace kiv::Cli
