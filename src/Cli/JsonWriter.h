#pragma once

#include <concepts>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kiv::Cli {

// The shortest text that reads back as the same value of the same type; "null" for one that is not finite.
std::string shortestText(float number);
std::string shortestText(double number);

// Writes one JSON text.
class JsonWriter {
public:
    enum class Layout { line, pretty };  // pretty: objects over several lines, lists of plain values on one

    explicit JsonWriter(Layout layout) : layout_(layout) {}

    JsonWriter &beginObject() { return begin('{'); }
    JsonWriter &endObject() { return end('}'); }
    JsonWriter &beginList() { return begin('['); }
    JsonWriter &endList() { return end(']'); }
    JsonWriter &key(std::string_view name);  // then its value follows

    JsonWriter &value(std::nullptr_t) { return plain("null"); }
    JsonWriter &value(bool flag) { return plain(flag ? "true" : "false"); }
    template <std::integral Number>
    JsonWriter &value(Number number) {
        return plain(std::to_string(number));
    }
    JsonWriter &value(double number);
    JsonWriter &value(float number);
    JsonWriter &value(std::string_view text);
    JsonWriter &value(const std::string &text) { return value(std::string_view(text)); }
    JsonWriter &value(const char *text) { return value(std::string_view(text)); }
    template <class T>
    JsonWriter &value(const std::optional<T> &optional) {
        return optional ? value(*optional) : value(nullptr);
    }
    template <class T>
    JsonWriter &field(std::string_view name, const T &v) {
        return key(name).value(v);
    }

    // The text, with a line end.
    std::string take();

private:
    enum class Element { plain, container };

    JsonWriter &begin(char bracket);
    JsonWriter &end(char bracket);
    JsonWriter &plain(std::string_view text);
    void separate(Element next);
    void breakLine();
    void quote(std::string_view text);

    Layout layout_;
    std::string text_;
    std::string open_;  // the brackets not yet closed
    bool isFirst_ = true;
    bool afterKey_ = false;
    bool hasBroken_ = false;  // the innermost open bracket's contents stand on lines of their own
};

}  // namespace kiv::Cli
