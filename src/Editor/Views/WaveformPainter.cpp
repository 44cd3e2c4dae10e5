#include "Editor/Views/WaveformPainter.h"

#include <QFontMetricsF>
#include <QPainter>
#include <cmath>

#include "Editor/Views/ViewStyle.h"

namespace kiv {
namespace {

using Role = AudioEditorThemeColor;

constexpr double previewStrength = 0.62, markerStrength = 0.75, hoverStrength = 0.25, loopStrength = 0.09;
constexpr int bandRows = 64;  // painted at once, so that they stay near the processor from one layer to the next
constexpr int noAudioSize = 13;
constexpr double noAudioGap = 8;                             // beside the text
constexpr double topBarHeight = 2, frameWidth = 2, dot = 3;  // logical pixels

// One painting of one part of the waveform.
class Painting {
public:
    Painting(QPainter &painter, const WaveformScene &scene, const ViewStyle &style, const QRect &part)
        : painter_(painter),
          scene_(scene),
          geometry_(scene.geometry),
          colors_(style.colors()),
          part_(part),
          scale_(scene.geometry.size.scale),
          hair_(hairline(scale_)),
          all_{0, scene.geometry.rows()} {}

    void background() {
        fillPart({0, geometry_.columns()}, all_, colors_[Role::waveBg]);
        for (const int line : scene_.timeLines) fillPart({line, line + hair_}, all_, colors_[Role::waveGrid]);
        for (const WaveLane &lane : geometry_.lanes) levelLines(lane);
        for (std::size_t i = 1; i < geometry_.lanes.size(); ++i)
            fillRows({geometry_.lanes[i - 1].rows.hi, geometry_.lanes[i].rows.lo}, colors_.edge);
    }

    void loopRange() {
        const auto &loop = scene_.marks.loop;
        if (loop && scene_.editsLoop) fillPart(*loop, all_, withAlpha(colors_[Role::accentBg], loopStrength));
    }

    void selection() {
        const auto &span = scene_.marks.selection;
        if (span) fillPart(*span, all_, colors_[Role::waveSelection]);
    }

    void centreLines() {
        for (const WaveLane &lane : geometry_.lanes) fillRows({lane.centreRow(), lane.centreRow() + hair_}, colors_.zero);
    }

    void sound(const WaveformImage &image, PixelSpan columns) {
        const int seam = image.width() - image.origin();
        drawImage(image, intersected(columns, {0, seam}), image.origin());
        drawImage(image, intersected(columns, {seam, image.width()}), -seam);
    }

    // Above the sound, but for its caps, which say more.
    void selectionBar(const WaveformImage &image) {
        if (!scene_.marks.selection) return;
        const PixelSpan bar{scene_.marks.selection->lo, scene_.marks.selection->hi + hair_};
        const PixelSpan part{part_.left(), part_.left() + part_.width()};
        const PixelSpan columns = intersected(intersected(bar, part), {0, image.width()});
        const int height = devicePixels(topBarHeight, scale_);
        for (int lo = columns.lo, x = lo; x <= columns.hi; ++x)
            if (x == columns.hi || image.isCapped(x)) {
                fillPart({lo, x}, {0, height}, colors_.selectionEdge);
                lo = x + 1;
            }
    }

    void overlays() {
        for (const OverlayLine &line : overlayLines(scene_)) overlay(line);
        if (scene_.isFramed) frame(hairline(frameWidth * scale_), colors_[Role::accentBg]);
    }

    void noAudio(const ViewStyle &style, TextCache &texts) {
        const QFont font = style.font(noAudioSize);
        const QFontMetricsF metrics(font);
        const int x = geometry_.columns() / 2, row = geometry_.lanes[0].centreRow();
        const int halfWidth = pixelAt((metrics.horizontalAdvance("No audio") / 2 + noAudioGap) * scale_);
        const int halfHeight = pixelAt(metrics.height() / 2 * scale_);
        fillPart({x - halfWidth, x + halfWidth}, {row - halfHeight, row + halfHeight}, colors_[Role::waveBg]);
        painter_.setPen(toColor(colors_.dim));
        texts.drawCentred(painter_, font, "No audio", x, row + metrics.capHeight() / 2 * scale_, scale_);
    }

private:
    void fillPart(PixelSpan columns, PixelSpan rows, Rgba color) {
        const QRect rect = rectOf(columns, rows).intersected(part_);
        if (!rect.isEmpty()) fill(painter_, rect, color);
    }
    void fillRows(PixelSpan rows, Rgba color) { fillPart({0, geometry_.columns()}, rows, color); }

    void levelLines(const WaveLane &lane) {
        for (const LevelMark &mark : levelMarks(geometry_, lane))
            fillRows({mark.row, mark.row + hair_}, mark.db == 0 ? colors_.fullScale : colors_[Role::waveGrid]);
    }

    void drawImage(const WaveformImage &image, PixelSpan columns, int shift) {
        const QRect rect = rectOf(columns, all_).intersected(part_);
        if (!rect.isEmpty()) drawPixels(painter_, image.pixels(), image.width(), image.rows(), rect.left() + shift, rect);
    }

    void overlay(const OverlayLine &line) {
        if (!rectOf(line.columns, all_).intersects(part_)) return;
        if (line.kind == OverlayLine::Kind::loop && !scene_.editsLoop) return dottedLine(line.columns);
        fillPart(line.columns, all_, lineColor(line.kind));
    }

    Rgba lineColor(OverlayLine::Kind kind) const {
        switch (kind) {
            case OverlayLine::Kind::marker:
                return withAlpha(colors_[Role::waveMarker], markerStrength);
            case OverlayLine::Kind::selectionEdge:
                return colors_.selectionEdge;
            case OverlayLine::Kind::cursor:
                return colors_[Role::waveCursor];
            case OverlayLine::Kind::playhead:
                return colors_[Role::wavePlayhead];
            case OverlayLine::Kind::hover:
                return withAlpha(colors_[Role::topbarButtonText], hoverStrength);
            case OverlayLine::Kind::loop:
                break;
        }
        return colors_[Role::accentBg];
    }

    void dottedLine(PixelSpan columns) {
        const int length = devicePixels(dot, scale_);
        for (int y = 0; y < all_.hi; y += 2 * length) fillPart(columns, {y, std::min(y + length, all_.hi)}, colors_.loopMark);
    }

    void frame(int width, Rgba color) {
        const int columns = geometry_.columns();
        fillPart({0, columns}, {0, width}, color);
        fillPart({0, columns}, {all_.hi - width, all_.hi}, color);
        fillPart({0, width}, all_, color);
        fillPart({columns - width, columns}, all_, color);
    }

    QPainter &painter_;
    const WaveformScene &scene_;
    const WaveformGeometry &geometry_;
    const ThemeColors &colors_;
    QRect part_;
    double scale_;
    int hair_;
    PixelSpan all_;
};

WaveformImage::Look soundLook(const ThemeColors &colors) {
    const Pixel sound = toPixel(colors[Role::waveFg]), ring = toPixel(colors[Role::waveBg]);
    return {{toPixel(colors.waveOuter), sound, toPixel(colors.over), sound, toPixel(colors.zero), ring}, 1, true};
}

WaveformImage::Look previewLook(const ThemeColors &colors, double factor) {
    const Pixel outcome = toPixel(mix(colors[Role::waveBg], colors[Role::accentBg], previewStrength));
    return {{outcome, 0, toPixel(colors.over), outcome, 0, 0}, factor, false};
}

// All that lies one over the other in every pixel.
void paintSound(QPainter &painter, const WaveformScene &scene, const WaveformPixels &pixels, const ViewStyle &style,
                const QRect &part) {
    Painting painting(painter, scene, style, part);
    painting.background();
    painting.loopRange();
    painting.selection();
    painting.centreLines();
    // What grows is seen behind the sound, what shrinks over it.
    if (scene.preview && scene.preview->factor > 1) painting.sound(pixels.preview(), scene.preview->columns);
    painting.sound(pixels.sound(), {0, scene.geometry.columns()});
    if (scene.preview && scene.preview->factor < 1) painting.sound(pixels.preview(), scene.preview->columns);
}

}  // namespace

void WaveformPixels::update(const SoundSource &source, const WaveformScene &scene, const ThemeColors &colors) {
    const WaveformGeometry &geometry = scene.geometry;
    // One more at the left, for every column touches the one before it.
    columns_.update(source, geometry.axis.framesPerColumn, geometry.isMerged, geometry.axis.firstColumn - 1,
                    geometry.columns() + 1);
    sound_.update(source, columns_, geometry, soundLook(colors));
    if (scene.preview) preview_.update(source, columns_, geometry, previewLook(colors, scene.preview->factor));
}

void paintWaveform(QPainter &painter, const WaveformScene &scene, const WaveformPixels &pixels, const ViewStyle &style,
                   TextCache &texts, const QRect &part) {
    for (int top = part.top(); top <= part.bottom(); top += bandRows)
        paintSound(painter, scene, pixels, style, part.intersected({part.left(), top, part.width(), bandRows}));
    Painting painting(painter, scene, style, part);
    if (scene.isEmpty) painting.noAudio(style, texts);
    painting.selectionBar(pixels.sound());
    painting.overlays();
}

}  // namespace kiv
