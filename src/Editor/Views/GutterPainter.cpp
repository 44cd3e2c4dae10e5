#include "Editor/Views/GutterPainter.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

#include "Editor/Views/ViewStyle.h"

namespace kiv {
namespace {

using Role = AudioEditorThemeColor;

// Logical pixels at the usual type size.
constexpr int textSize = 11;
constexpr double afterLevel = 6, levelBaseline = 3.5;
constexpr double channelLeft = 6, channelTop = 11, channelBaseline = 8;
constexpr double betweenTexts = 2;

// Whether a level's label would come upon the name of a channel, as only names of two digits are wide enough for.
bool touchesChannel(const GutterScene &scene, const GutterScene::Text &level, const ViewStyle &style, TextCache &texts) {
    const double scale = scene.size.scale, reach = channelBaseline * style.textFactor() * scale;
    const double room = (gutterWidth(style.textFactor()) - afterLevel - channelLeft - betweenTexts) * scale;
    const double width = texts.width(style.font(textSize), level.text, scale);
    return std::any_of(scene.channels.begin(), scene.channels.end(), [&](const GutterScene::Text &channel) {
        const double below = level.y - (channel.y + channelTop * scale);
        const QFont bold = style.font(textSize, QFont::DemiBold);
        return below > -reach / 2 && below < reach * 1.5 && width + texts.width(bold, channel.text, scale) > room;
    });
}

}  // namespace

void paintGutter(QPainter &painter, const GutterScene &scene, const ViewStyle &style, TextCache &texts) {
    const double scale = scene.size.scale, factor = style.textFactor();
    const int width = int(std::ceil(scene.size.width * scale)), height = int(std::ceil(scene.size.height * scale));
    fill(painter, QRect(0, 0, width, height), style.colors()[Role::rulerBg]);
    for (const PixelSpan &edge : scene.edges) fill(painter, rectOf({0, width}, edge), style.colors().edge);
    const int right = devicePixels(gutterWidth(factor), scale), hair = hairline(scale);
    fill(painter, rectOf({right - hair, right}, {0, height}), style.colors().edge);
    painter.setPen(style.color(Role::rulerText));
    for (const GutterScene::Text &level : scene.levels)
        if (!touchesChannel(scene, level, style, texts))
            texts.drawRight(painter, style.font(textSize), level.text, right - afterLevel * scale,
                            level.y + levelBaseline * factor * scale, scale);
    painter.setPen(style.color(Role::topbarButtonText));
    for (const GutterScene::Text &channel : scene.channels)
        texts.drawLeft(painter, style.font(textSize, QFont::DemiBold), channel.text, channelLeft * scale,
                       channel.y + (channelTop + channelBaseline * factor) * scale, scale);
}

}  // namespace kiv
