#include <png.h>

#include <algorithm>
#include <stdexcept>

#include "Cli/Commands.h"
#include "Cli/Interrupt.h"
#include "Cli/Reading.h"
#include "Document/AudioFileReading.h"
#include "Editor/AudioEditorSpectral/Analysis.h"
#include "Editor/Surfaces/SpectrumRamp.h"
#include "Support/Failures.h"

namespace kiv::Cli {

namespace {

using AudioEditorSpectral::Analysis;
using AudioEditorSpectral::bandCount;

// One index into the ramp for each pixel, the highest band's row first.
std::vector<std::uint8_t> pixels(const Analysis &analysis) {
    const auto indices = spectrumIndices();
    std::vector<std::uint8_t> result(std::size_t(analysis.columns * bandCount));
    for (std::int64_t c = 0; c < analysis.columns; ++c)
        for (int b = 0; b < bandCount; ++b)
            result[std::size_t((bandCount - 1 - b) * analysis.columns + c)] = indices[analysis.column(c)[b]];
    return result;
}

std::vector<std::uint8_t> colorMap() {
    std::vector<std::uint8_t> map;
    for (const Rgba color : spectrumRamp(AudioEditorTheme::standard()))
        map.insert(map.end(), {std::uint8_t(color >> 24), std::uint8_t(color >> 16), std::uint8_t(color >> 8)});
    return map;
}

// A PNG file of a picture with a table of 256 colours.
std::vector<std::byte> pngFile(const std::vector<std::uint8_t> &indices, std::int64_t width) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = png_uint_32(width);
    image.height = png_uint_32(bandCount);
    image.format = PNG_FORMAT_RGB_COLORMAP;
    image.flags = PNG_IMAGE_FLAG_FAST;
    image.colormap_entries = 256;
    const std::vector<std::uint8_t> colors = colorMap();
    std::vector<std::byte> file(PNG_IMAGE_PNG_SIZE_MAX(image));
    png_alloc_size_t size = file.size();
    if (!png_image_write_to_memory(&image, file.data(), &size, 0, indices.data(), 0, colors.data()))
        throw std::runtime_error(std::string("the picture could not be made: ") + image.message);
    file.resize(size);
    return file;
}

void writePicture(const DocumentServices &services, const std::string &path, const std::vector<std::byte> &file) {
    try {
        services.files.replace(path, [&](ByteSink &sink) { sink.write(file); });
    } catch (...) {
        throw FileFailure(path, errorText(std::current_exception()));
    }
}

}  // namespace

std::string spectrum(const SpectrumCall &call, const DocumentServices &services) {
    Interrupt::install();
    const AudioEditorSpectral::State state(0, readNow(services, call.file).buffer, 0);
    Analysis analysis;
    runNow(services, call.file, [&](Progress &progress) { analysis = AudioEditorSpectral::analyze(state, &progress); });
    writePicture(services, call.out, pngFile(pixels(analysis), analysis.columns));
    return "";
}

}  // namespace kiv::Cli
