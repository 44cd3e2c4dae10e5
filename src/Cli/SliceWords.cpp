#include "Cli/SliceWords.h"

#include "Support/DecimalText.h"

namespace kiv::Cli {

namespace {

const SliceSettingRow *settingOf(const std::string &word) {
    const std::size_t equals = word.find('=');
    return equals == word.npos ? nullptr : sliceSettingFromField(word.substr(0, equals));
}

std::string valuesText(const SliceSettingRow &row) {
    if (row.setting == SliceSetting::divisions) return "one of 2, 4, 8, 16, 32, 64";
    return "a whole number from " + decimalText(row.stored.lo, 0) + " to " + decimalText(row.stored.hi, 0);
}

}  // namespace

bool isSliceSetting(const std::string &word) { return settingOf(word); }

SliceValue parseSliceSetting(const std::string &word) {
    const SliceSettingRow *row = settingOf(word);
    if (!row) throw WrongWords("“" + word + "” is no setting: " + sliceSettingsHelp());
    const auto number = parseNumber(word.substr(word.find('=') + 1));
    if (!number || row->limited(*number) != *number) throw WrongWords("“" + word + "” is not " + valuesText(*row));
    return {row->setting, int(*number)};
}

AudioEditorSlicer::Mode parseSliceMode(const std::string &word) {
    if (const auto mode = AudioEditorSlicer::modeFromText(word)) return *mode;
    throw WrongWords("“" + word + "” is not one of: transients stripSilence grid");
}

std::string sliceSettingsHelp() {
    std::string text;
    for (const SliceSettingRow &row : sliceSettings()) text += (text.empty() ? "" : " ") + std::string(row.field) + "=";
    return text;
}

}  // namespace kiv::Cli
