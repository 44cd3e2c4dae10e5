#include "Cli/JsonWriter.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <utility>

#include "Audio/Files/AudioFileContents.h"

namespace kiv::Cli {

namespace {

template <class T>
std::string shortest(T number) {
    if (!std::isfinite(number)) return "null";
    std::array<char, 32> text;
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

void appendEscaped(std::string &to, char c) {
    constexpr std::string_view hex = "0123456789abcdef";
    if (c == '"' || c == '\\') {
        (to += '\\') += c;
    } else if (c == '\n') {
        to += "\\n";
    } else if (std::uint8_t(c) < 0x20) {
        ((to += "\\u00") += hex[std::uint8_t(c) >> 4]) += hex[std::uint8_t(c) & 15];
    } else {
        to += c;
    }
}

}  // namespace

std::string shortestText(float number) { return shortest(number); }
std::string shortestText(double number) { return shortest(number); }

JsonWriter &JsonWriter::key(std::string_view name) {
    separate(Element::container);
    quote(name);
    text_ += layout_ == Layout::pretty ? ": " : ":";
    afterKey_ = true;
    return *this;
}

JsonWriter &JsonWriter::value(double number) { return plain(shortestText(number)); }
JsonWriter &JsonWriter::value(float number) { return plain(shortestText(number)); }

JsonWriter &JsonWriter::value(std::string_view text) {
    separate(Element::plain);
    quote(text);
    return *this;
}

std::string JsonWriter::take() { return std::move(text_) + "\n"; }

JsonWriter &JsonWriter::begin(char bracket) {
    separate(Element::container);
    text_ += bracket;
    open_ += bracket;
    isFirst_ = true;
    hasBroken_ = false;
    return *this;
}

JsonWriter &JsonWriter::end(char bracket) {
    open_.pop_back();
    if (hasBroken_ && !isFirst_) breakLine();
    text_ += bracket;
    isFirst_ = false;
    hasBroken_ = layout_ == Layout::pretty;  // for what holds a container stands on lines of its own
    return *this;
}

JsonWriter &JsonWriter::plain(std::string_view text) {
    separate(Element::plain);
    text_ += text;
    return *this;
}

// What stands between the last element and the next one.
void JsonWriter::separate(Element next) {
    if (std::exchange(afterKey_, false)) return;
    const bool breaks = layout_ == Layout::pretty && next == Element::container && !open_.empty();
    if (!isFirst_) text_ += breaks || layout_ == Layout::line ? "," : ", ";
    if (breaks) breakLine();
    hasBroken_ = hasBroken_ || breaks;
    isFirst_ = false;
}

void JsonWriter::breakLine() { text_.append("\n").append(2 * open_.size(), ' '); }

void JsonWriter::quote(std::string_view text) {
    text_ += '"';
    for (const char c : displayText(std::string(text))) appendEscaped(text_, c);
    text_ += '"';
}

}  // namespace kiv::Cli
