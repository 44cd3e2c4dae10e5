#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

// Runs a fuzz target over files, and over the files in folders, without the fuzzing engine.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {

void runFile(const std::filesystem::path &path) {
    std::ifstream stream(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
}

int runAll(const std::filesystem::path &path) {
    if (!std::filesystem::is_directory(path)) return runFile(path), 1;
    int count = 0;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(path))
        if (entry.is_regular_file()) runFile(entry.path()), ++count;
    return count;
}

}  // namespace

int main(int count, char **arguments) {
    int files = 0;
    for (int i = 1; i < count; ++i) files += runAll(arguments[i]);
    std::printf("%d files\n", files);
    return files > 0 ? 0 : 1;
}
