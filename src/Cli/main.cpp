#include <cerrno>
#include <cstdio>
#include <cstring>

#include "Cli/Commands.h"
#include "Cli/ConsoleJobs.h"
#include "Cli/Reading.h"
#include "Cli/Steps.h"
#include "Platform/Fake/FakeDefaults.h"
#include "Platform/Linux/LinuxFileSystem.h"
#include "Platform/Linux/ModuleDecoders.h"
#include "Support/Failures.h"

namespace kiv::Cli {

namespace {

enum Status { done = 0, failed = 1, wrongWords = 2 };

int complain(Status status, const std::string &who, const std::string &text) {
    std::fprintf(stderr, "%s: %s\n", who.c_str(), text.c_str());
    return status;
}

int print(const std::string &text) {
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
    return isWritten ? done : complain(failed, "standard output", std::strerror(errno));
}

// What the call works with: no stored settings, and no sound.
struct World {
    FakeDefaults defaults;
    Settings settings{defaults};
    Clipboard clipboard;
    LinuxFileSystem fileSystem;
    std::unique_ptr<Files> files = makeFiles(fileSystem);
    ModuleDecoders decoders;
    ConsoleJobs jobs;

    DocumentServices services() { return {*files, jobs, settings, clipboard, nullptr, &decoders, Peaks::none}; }
};

struct Perform {
    DocumentServices services;

    std::string operator()(const Answered &call) const { return call.text; }
    std::string operator()(const InfoCall &call) const { return info(call, services); }
    std::string operator()(const EditCall &call) const { return edit(call, services); }
    std::string operator()(const LoopsCall &call) const { return loops(call, services); }
    std::string operator()(const SlicesCall &call) const { return slices(call, services); }
    std::string operator()(const PeaksCall &call) const { return peaks(call, services); }
    std::string operator()(const SpectrumCall &call) const { return spectrum(call, services); }
    std::string operator()(const EqResponseCall &call) const { return eqResponse(call); }
    std::string operator()(const CommandsCall &call) const { return commands(call); }
};

std::string fileOf(const Call &call) {
    return std::visit(
        [](const auto &each) -> std::string {
            if constexpr (requires { each.file; }) return each.file;
            return "kiv";
        },
        call);
}

int run(int argc, const char *const *argv) {
    const Call call = parseCommandLine(argc, argv);
    const auto *answered = std::get_if<Answered>(&call);
    if (answered && answered->status != done) return complain(wrongWords, "kiv", answered->text);
    World world;
    try {
        return print(std::visit(Perform{world.services()}, call));
    } catch (const WrongWords &error) {
        return complain(wrongWords, "kiv", error.what());
    } catch (const FileFailure &failure) {
        return complain(failed, failure.file, failure.what());
    } catch (const Cancelled &) {
        return complain(failed, fileOf(call), AudioDocument::cancelledText);
    } catch (...) {
        return complain(failed, fileOf(call), errorText(std::current_exception()));
    }
}

}  // namespace

}  // namespace kiv::Cli

int main(int argc, char **argv) { return kiv::Cli::run(argc, argv); }
