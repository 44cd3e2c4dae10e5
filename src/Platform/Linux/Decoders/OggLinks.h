#pragma once

#include "Support/ByteSource.h"

namespace kiv {

// Whether a whole Ogg stream stands behind another one, as where files have been put together or a broadcast was recorded.
// Looks at the headers of all pages (RFC 3533, 6); where one is not where it should be, at those before it.
bool hasSeveralOggLinks(const ByteSource &source);

}  // namespace kiv
