#pragma once

namespace kiv {

// What a block of samples was made from, where 32-bit floats do not say all of it. Nothing here knows what that is; it goes
// wherever the samples go, so that whoever made it can tell unchanged samples from new ones and write them back exactly.
class SampleOriginals {
public:
    virtual ~SampleOriginals() = default;
};

}  // namespace kiv
