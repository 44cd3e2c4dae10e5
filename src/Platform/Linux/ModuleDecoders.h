#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Platform/DecodedReader.h"

namespace kiv {

// The decoders of this machine, which stand in modules that are loaded when a file first needs one: a program that opens none
// starts as quickly as one without. A module that is not installed, or lacks a library, takes its kinds of files with it.
class ModuleDecoders : public DecodedReader {
public:
    // Looks for modules beside the program and where it is installed, or in a folder alone.
    ModuleDecoders();
    explicit ModuleDecoders(const std::string &folder);
    ~ModuleDecoders() override;

    std::unique_ptr<DecodedSound> open(const ByteSource &source) override;
    std::optional<DecodedTags> tags(const ByteSource &source) override;

private:
    class Module;
    std::vector<std::unique_ptr<Module>> modules_;  // in the order they are asked
};

}  // namespace kiv
