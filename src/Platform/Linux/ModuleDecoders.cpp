#include "Platform/Linux/ModuleDecoders.h"

#include <dlfcn.h>

#include <filesystem>

#include "Platform/Linux/Decoders/DecoderModule.h"

namespace kiv {
namespace {

std::vector<std::string> moduleFolders() {
    std::error_code error;
    const auto folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    return {folder, folder / "../lib/kiv-audio-editor", folder / ".."};
}

}  // namespace

// Never unloaded: decoders keep threads and tables.
class ModuleDecoders::Module {
public:
    Module(const std::vector<std::string> &folders, const char *name) : folders_(folders), name_(name) {}

    // Null when it cannot be loaded.
    DecodedReader *reader() {
        std::call_once(once_, [this] { load(); });
        return reader_;
    }

private:
    void load() {
        for (const std::string &folder : folders_) {
            void *module = ::dlopen((folder + "/" + name_).c_str(), RTLD_NOW | RTLD_LOCAL);
            if (!module) continue;
            const auto entry = reinterpret_cast<DecoderModuleEntry *>(::dlsym(module, decoderModuleSymbol));
            reader_ = entry ? entry() : nullptr;
            if (reader_) return;
        }
    }

    std::vector<std::string> folders_;
    const char *name_;
    std::once_flag once_;
    DecodedReader *reader_ = nullptr;
};

ModuleDecoders::ModuleDecoders() {
    for (const char *name : {"kiv-decoders.so", "kiv-ffmpeg.so"})
        modules_.push_back(std::make_unique<Module>(moduleFolders(), name));
}

ModuleDecoders::ModuleDecoders(const std::string &folder) {
    for (const char *name : {"kiv-decoders.so", "kiv-ffmpeg.so"})
        modules_.push_back(std::make_unique<Module>(std::vector{folder}, name));
}

ModuleDecoders::~ModuleDecoders() = default;

std::unique_ptr<DecodedSound> ModuleDecoders::open(const ByteSource &source) {
    for (const auto &module : modules_) {
        DecodedReader *reader = module->reader();
        auto sound = reader ? reader->open(source) : nullptr;
        if (sound) return sound;
    }
    return nullptr;
}

// The last one asked to decode is the first to tell: it knows more kinds of tags.
std::optional<DecodedTags> ModuleDecoders::tags(const ByteSource &source) {
    for (auto module = modules_.rbegin(); module != modules_.rend(); ++module) {
        DecodedReader *reader = (*module)->reader();
        if (auto tags = reader ? reader->tags(source) : std::nullopt) return tags;
    }
    return std::nullopt;
}

}  // namespace kiv
