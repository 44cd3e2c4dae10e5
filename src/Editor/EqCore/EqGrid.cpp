#include "Editor/EqCore/EqGrid.h"

#include <algorithm>
#include <cmath>

#include "Support/DecimalText.h"

namespace kiv {
namespace {

const double logLowest = std::log(20.0), logSpan = std::log(1000.0);

std::vector<double> linesBetweenLabels() {
    std::vector<double> lines;
    for (const double decade : {10, 100, 1000, 10000})
        for (int i = 2; i <= 9; ++i) {
            const double hz = i * decade;
            if (hz <= 20000 && std::ranges::find(EqGrid::labeledHz, hz) == EqGrid::labeledHz.end()) lines.push_back(hz);
        }
    return lines;
}

double lineStep(double dbRange) {
    if (dbRange <= 6) return 1;
    if (dbRange <= 12) return 3;
    return dbRange <= 20 ? 5 : 10;
}

}  // namespace

double EqGrid::nextDbRange(double dbRange) {
    const auto at = std::ranges::find(dbRanges, dbRange);
    if (at == dbRanges.end()) return 20;
    return at + 1 == dbRanges.end() ? dbRanges.front() : *(at + 1);
}

const std::vector<double> &EqGrid::minorHz() {
    static const std::vector<double> lines = linesBetweenLabels();
    return lines;
}

std::vector<double> EqGrid::dbLines() const {
    std::vector<double> lines;
    const double step = lineStep(dbRange);
    for (int i = 1; i * step < dbRange - 1e-9; ++i) lines.insert(lines.end(), {i * step, -i * step});
    return lines;
}

double EqGrid::hz(double x) const { return std::exp(x / std::max(width, 1.0) * logSpan + logLowest); }

double EqGrid::x(double hz) const { return (std::log(hz) - logLowest) / logSpan * std::max(width, 1.0); }

std::string EqGrid::label(double hz) {
    if (hz < 1000) return decimalText(std::round(hz), 0);
    const double thousands = hz / 1000;
    return decimalText(thousands, thousands == std::floor(thousands) ? 0 : 1) + "k";
}

std::string EqGrid::readout(double hz) {
    if (hz >= 10000) return decimalText(hz / 1000, 1) + " kHz";
    if (hz >= 1000) return decimalText(hz / 1000, 2) + " kHz";
    return hz >= 100 ? decimalText(std::round(hz), 0) + " Hz" : decimalText(hz, 1) + " Hz";
}

}  // namespace kiv
