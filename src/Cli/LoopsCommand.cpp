#include "Cli/Commands.h"
#include "Cli/Interrupt.h"
#include "Cli/Reading.h"
#include "Cli/Results.h"

namespace kiv::Cli {

namespace {

using AudioEditorLoopFinder::LoopPoints;
using Proposals = std::vector<AudioEditorLoopFinder::Proposal>;

Proposals search(const AudioEditorBuffer &buffer, LoopPoints points, Jobs &jobs) {
    Proposals found;
    std::exception_ptr failed;
    jobs.run(
        std::make_shared<Progress>(),
        [&](Progress &progress) { found = AudioEditorLoopFinder::analyze(buffer, points, &progress); },
        [&](std::exception_ptr failure) { failed = failure; });
    if (failed) std::rethrow_exception(failed);
    return found;
}

std::string asJson(const Proposals &proposals, JsonWriter::Layout layout) {
    JsonWriter json(layout);
    writeProposals(json, proposals);
    return json.take();
}

// A line a loop: start, end, match.
std::string asText(const Proposals &proposals) {
    std::string text;
    for (const auto &[loop, match] : proposals)
        text += std::to_string(loop.lo) + " " + std::to_string(loop.hi) + " " + shortestText(match) + "\n";
    return text;
}

}  // namespace

std::string loops(const LoopsCall &call, const DocumentServices &services) {
    Interrupt::install();
    const auto points = call.zeroCrossing ? LoopPoints::atRisingZeroCrossings : LoopPoints::anywhere;
    const Proposals found = search(readNow(services, call.file).buffer, points, services.jobs);
    return call.json ? asJson(found, *call.json) : asText(found);
}

}  // namespace kiv::Cli
