#pragma once

#include "Cli/CommandLine.h"
#include "Document/AudioDocument.h"

// What each command of `kiv` does; the text for standard output is returned. Throw FileFailure, WrongWords and Cancelled.
namespace kiv::Cli {

std::string info(const InfoCall &call, const DocumentServices &services);
std::string edit(const EditCall &call, const DocumentServices &services);
std::string loops(const LoopsCall &call, const DocumentServices &services);
std::string slices(const SlicesCall &call, const DocumentServices &services);
std::string peaks(const PeaksCall &call, const DocumentServices &services);
std::string spectrum(const SpectrumCall &call, const DocumentServices &services);
std::string eqResponse(const EqResponseCall &call);  // throws WrongWords only
std::string commands(const CommandsCall &call);

}  // namespace kiv::Cli
