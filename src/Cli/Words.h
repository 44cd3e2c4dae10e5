#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// The words of a call and what they stand for. Nothing here opens a file.
namespace kiv::Cli {

__extension__ typedef __int128 Wide;

// The words are wrong: the call ends before anything is opened.
struct WrongWords : std::runtime_error {
    using std::runtime_error::runtime_error;
};

using Words = std::vector<std::string>;

// Whether a # that begins a word begins a comment, as in scripts.
enum class Comments { none, afterHash };

// A step's words, parted by blanks. A word with blanks stands in double quotes, in which \" and \\ stand for themselves. Throws
// WrongWords.
Words splitWords(std::string_view step, Comments comments = Comments::none);

// The steps of a script, one a line, without the lines that hold none. Throws WrongWords, naming the line.
std::vector<Words> scriptSteps(std::string_view script);

// A decimal number, with an optional sign; nothing for anything else, nan and infinity included.
std::optional<double> parseNumber(std::string_view word);

// A place in the sound as it was written: a frame, or a time that becomes one when the rate is known.
class Position {
public:
    // "4800", "2s", "1.5s", "20ms", "1:05.250"; all may carry a minus. Nothing for anything else.
    static std::optional<Position> parse(std::string_view word);

    // A time is rounded half away from zero, exactly: its decimals are never held as a binary fraction.
    std::int64_t frame(std::int64_t sampleRate) const;
    // Nothing when one is a frame and the other a time, for then it takes the rate.
    static std::optional<bool> isBelow(const Position &a, const Position &b);

private:
    bool isTime_ = false;
    Wide value_ = 0;  // frames, or 10⁻¹⁸ s
};

}  // namespace kiv::Cli
