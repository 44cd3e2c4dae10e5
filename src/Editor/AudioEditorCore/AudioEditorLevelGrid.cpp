#include "Editor/AudioEditorCore/AudioEditorLevelGrid.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "Support/DecimalText.h"

namespace kiv::AudioEditorLevelGrid {
namespace {

constexpr std::array<double, 7> candidatesDb{-6, -12, -18, -24, -36, -48, -3};
constexpr double labelDistance = 18;
constexpr double centreDistance = 26;
constexpr double silenceDb = -std::numeric_limits<double>::infinity();

bool hasRoom(const std::vector<Mark> &placed, double offset) {
    return offset >= centreDistance && std::all_of(placed.begin(), placed.end(), [&](const Mark &mark) {
               return std::abs(mark.offset - offset) >= labelDistance;
           });
}

}  // namespace

std::vector<Mark> marks(double fullScale, double verticalZoomDb) {
    const auto offsetOf = [&](double db) { return fullScale * std::pow(10.0, (db + verticalZoomDb) / 20); };
    std::vector<Mark> placed{{silenceDb, 0}};
    if (verticalZoomDb <= 0) placed.push_back({0, offsetOf(0)});
    for (const double db : candidatesDb)
        if (db + verticalZoomDb <= 0 && hasRoom(placed, offsetOf(db))) placed.push_back({db, offsetOf(db)});
    std::sort(placed.begin(), placed.end(), [](const Mark &a, const Mark &b) { return a.db > b.db; });
    return placed;
}

std::string label(double db) {
    if (db == silenceDb) return "−∞";
    return db < 0 ? "−" + decimalText(-db, 0) : decimalText(db, 0);
}

}  // namespace kiv::AudioEditorLevelGrid
