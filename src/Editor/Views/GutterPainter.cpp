#include "Editor/Views/GutterPainter.h"

#include <QPainter>
#include <cmath>

#include "Editor/Views/ViewStyle.h"

namespace kiv {
namespace {

using Role = AudioEditorThemeColor;

// Logical pixels at the usual type size.
constexpr int textSize = 11;
constexpr double levelRight = 36, levelBaseline = 3.5;
constexpr double channelLeft = 8, channelTop = 11, channelBaseline = 8;

}  // namespace

void paintGutter(QPainter &painter, const GutterScene &scene, const ViewStyle &style, TextCache &texts) {
    const double scale = scene.size.scale, factor = style.textFactor();
    const int width = int(std::ceil(scene.size.width * scale)), height = int(std::ceil(scene.size.height * scale));
    fill(painter, QRect(0, 0, width, height), style.colors()[Role::rulerBg]);
    for (const PixelSpan &edge : scene.edges) fill(painter, rectOf({0, width}, edge), style.colors().edge);
    const int right = devicePixels(gutterWidth, scale), hair = hairline(scale);
    fill(painter, rectOf({right - hair, right}, {0, height}), style.colors().edge);
    painter.setPen(style.color(Role::rulerText));
    for (const GutterScene::Text &level : scene.levels)
        texts.drawRight(painter, style.font(textSize), level.text, levelRight * scale, level.y + levelBaseline * factor * scale,
                        scale);
    painter.setPen(style.color(Role::topbarButtonText));
    for (const GutterScene::Text &channel : scene.channels)
        texts.drawLeft(painter, style.font(textSize, QFont::DemiBold), channel.text, channelLeft * scale,
                       channel.y + (channelTop + channelBaseline * factor) * scale, scale);
}

}  // namespace kiv
