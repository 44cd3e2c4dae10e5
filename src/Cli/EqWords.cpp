#include "Cli/EqWords.h"

#include "Support/DecimalText.h"

namespace kiv::Cli {

namespace {

[[noreturn]] void fail(const std::string &word, const std::string &why) { throw WrongWords("“" + word + "” is " + why); }

std::vector<std::string> parted(std::string_view text, char by) {
    std::vector<std::string> parts;
    for (;;) {
        const std::size_t end = text.find(by);
        parts.emplace_back(text.substr(0, end));
        if (end == text.npos) return parts;
        text.remove_prefix(end + 1);
    }
}

double parseIn(const EqRange &range, const std::string &word) {
    const auto number = parseNumber(word);
    if (!number || !range.contains(*number)) {
        const int decimals = range.lo == double(int(range.lo)) ? 0 : 1;
        fail(word, "no number from " + decimalText(range.lo, decimals) + " to " + decimalText(range.hi, 0));
    }
    return *number;
}

bool parseSwitch(const std::string &word) {
    if (word != "on" && word != "off") fail(word, "neither on nor off");
    return word == "on";
}

std::function<void(EqSettings &)> parseCut(EqCut EqSettings::*cut, const std::vector<std::string> &parts) {
    if (parts.size() > 2) throw WrongWords("a cut is on|off:HZ");
    const bool on = parseSwitch(parts[0]);
    const double hz = parts.size() > 1 ? parseIn(EqRanges::freqHz, parts[1]) : 0;
    return [cut, on, hz](EqSettings &settings) {
        (settings.*cut).on = on;
        if (hz > 0) (settings.*cut).freqHz = hz;
    };
}

std::function<void(EqSettings &)> parseBand(std::size_t index, const std::vector<std::string> &parts) {
    constexpr EqBandParam params[] = {EqBandParam::freq, EqBandParam::gain, EqBandParam::q};
    if (parts.size() > 1 + std::size(params)) throw WrongWords("a band is on|off:HZ:DB:Q");
    const bool on = parseSwitch(parts[0]);
    std::vector<double> values;
    for (std::size_t i = 1; i < parts.size(); ++i) values.push_back(parseIn(eqRange(params[i - 1]), parts[i]));
    return [=](EqSettings &settings) {
        settings.bands[index].on = on;
        for (std::size_t i = 0; i < values.size(); ++i) setEqValue(settings.bands[index], params[i], values[i]);
    };
}

}  // namespace

std::function<void(EqSettings &)> parseEqSetting(const std::string &word) {
    const std::size_t equals = word.find('=');
    const std::string name = word.substr(0, equals), value = equals == word.npos ? "" : word.substr(equals + 1);
    if (name == "gain" && equals != word.npos)
        return [db = parseIn(EqRanges::outputGainDb, value)](EqSettings &settings) { settings.gainDb = db; };
    const std::vector<std::string> parts = parted(value, ':');
    if (name == "lowCut") return parseCut(&EqSettings::lowCut, parts);
    if (name == "highCut") return parseCut(&EqSettings::highCut, parts);
    const bool isBand = name.size() == 5 && name.starts_with("band") && name[4] >= '0' && name[4] < '0' + eqBandCount;
    if (!isBand) fail(word, "none of: gain=DB lowCut=on|off:HZ highCut=on|off:HZ bandN=on|off:HZ:DB:Q (N 0 to 3)");
    return parseBand(std::size_t(name[4] - '0'), parts);
}

}  // namespace kiv::Cli
