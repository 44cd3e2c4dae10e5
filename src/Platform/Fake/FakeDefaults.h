#pragma once

#include <map>

#include "Platform/Defaults.h"

namespace kiv {

// Settings that are kept in memory only: for tests, and for programs that must not depend on what the user has stored.
class FakeDefaults : public Defaults {
public:
    FakeDefaults() = default;
    explicit FakeDefaults(std::map<std::string, std::string, std::less<>> values) : values_(std::move(values)) {}

    std::optional<std::string> text(std::string_view key) const override {
        const auto found = values_.find(key);
        return found == values_.end() ? std::nullopt : std::optional(found->second);
    }
    void setText(std::string_view key, const std::string &value) override { values_.insert_or_assign(std::string(key), value); }
    void remove(std::string_view key) override {
        if (const auto found = values_.find(key); found != values_.end()) values_.erase(found);
    }

    const std::map<std::string, std::string, std::less<>> &values() const { return values_; }

private:
    std::map<std::string, std::string, std::less<>> values_;
};

}  // namespace kiv
