#include "Audio/Files/ByteFields.h"

namespace kiv {

std::string idAt(std::span<const std::byte> bytes, std::size_t offset) {
    assert(offset <= bytes.size() && 4 <= bytes.size() - offset);
    return {reinterpret_cast<const char *>(bytes.data()) + offset, 4};
}

void append(std::vector<std::byte> &to, std::span<const std::byte> bytes) { to.insert(to.end(), bytes.begin(), bytes.end()); }

void append(std::vector<std::byte> &to, std::string_view text) { append(to, std::as_bytes(std::span(text))); }

}  // namespace kiv
