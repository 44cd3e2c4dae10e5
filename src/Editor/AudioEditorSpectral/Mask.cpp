#include "Editor/AudioEditorSpectral/Mask.h"

#include <algorithm>

namespace kiv::AudioEditorSpectral {
namespace {

bool isAll(const float *values, std::int64_t count, float value) {
    int different = 0;
    for (std::int64_t i = 0; i < count; ++i) different += values[i] != value;
    return different == 0;
}

}  // namespace

// The columns that the last page has too many hold the same and are never read.
Mask::Mask(std::int64_t columns, float gain) : columns_(columns), uniform_(gain) {
    const auto page = std::make_shared<Page>();
    page->fill(gain);
    pages_.assign(std::size_t((columns + pageColumns - 1) / pageColumns), page);
}

float *Mask::writableColumn(std::int64_t column) {
    uniform_.reset();
    auto &page = pages_[std::size_t(column / pageColumns)];
    if (page.use_count() > 1) page = std::make_shared<Page>(*page);
    return page->data() + column % pageColumns * bandCount;
}

void Mask::updateUniform() {
    uniform_.reset();
    const float first = pages_.front()->front();
    const Page *last = nullptr;
    for (std::size_t i = 0; i < pages_.size(); ++i) {
        const std::int64_t columns = std::min(columns_ - std::int64_t(i) * pageColumns, pageColumns);
        if (pages_[i].get() != last && !isAll(pages_[i]->data(), columns * bandCount, first)) return;
        last = pages_[i].get();
    }
    uniform_ = first;
}

std::size_t Mask::bytes() const {
    std::vector<const Page *> own;
    for (const auto &page : pages_) own.push_back(page.get());
    std::sort(own.begin(), own.end());
    own.erase(std::unique(own.begin(), own.end()), own.end());
    return own.size() * sizeof(Page) + pages_.size() * sizeof pages_[0];
}

bool operator==(const Mask &a, const Mask &b) {
    if (a.columns_ != b.columns_) return false;
    for (std::int64_t c = 0; c < a.columns_; ++c)
        if (!a.shares(c, b) && !std::equal(a.column(c), a.column(c) + bandCount, b.column(c))) return false;
    return true;
}

bool isUnity(const float *column) { return isAll(column, bandCount, 1.0f); }

}  // namespace kiv::AudioEditorSpectral
