#include "Cli/Commands.h"
#include "Cli/EqWords.h"
#include "Editor/EqCore/EqResponse.h"

namespace kiv::Cli {

namespace {

double aboveZero(std::string_view word, const char *what) {
    const auto number = parseNumber(word);
    if (!number || !(*number > 0)) throw WrongWords("“" + std::string(word) + "” is no " + what + " above 0");
    return *number;
}

std::vector<double> frequencies(std::string_view list) {
    std::vector<double> hz;
    for (;;) {
        const std::size_t end = list.find(',');
        hz.push_back(aboveZero(list.substr(0, end), "frequency"));
        if (end == list.npos) return hz;
        list.remove_prefix(end + 1);
    }
}

}  // namespace

std::string eqResponse(const EqResponseCall &call) {
    EqSettings settings;
    for (const std::string &word : splitWords(call.settings)) parseEqSetting(word)(settings);
    const double rate = aboveZero(call.rate, "rate");
    std::string text;
    JsonWriter json(call.json.value_or(JsonWriter::Layout::line));
    json.beginList();
    for (const double hz : frequencies(call.at)) {
        const double db = EqResponse::totalDb(settings, hz, rate);
        json.value(db);
        text += shortestText(hz) + " " + shortestText(db) + "\n";
    }
    return call.json ? json.endList().take() : text;
}

}  // namespace kiv::Cli
