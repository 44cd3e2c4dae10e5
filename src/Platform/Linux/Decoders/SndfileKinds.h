#pragma once

#include "Support/ByteSource.h"

namespace kiv {

// Whether libsndfile may be given a file. It walks through all that a chunk says it holds, which takes it hours where the size
// is not true; and what it hands on to a decoder of MPEG audio is told lengths that are not there, and complained about on
// standard error. Others know such files better.
bool isForSndfile(const ByteSource &source);

}  // namespace kiv
