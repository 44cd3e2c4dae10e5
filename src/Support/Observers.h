#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace kiv {

// Keeps an observer registered for as long as it lives. It may outlive what it observes.
class Subscription {
public:
    Subscription() = default;
    explicit Subscription(std::function<void()> end) : end_(std::move(end)) {}
    Subscription(Subscription &&other) noexcept : end_(std::exchange(other.end_, nullptr)) {}
    Subscription &operator=(Subscription &&other) noexcept {
        if (this != &other) {
            reset();
            end_ = std::exchange(other.end_, nullptr);
        }
        return *this;
    }
    ~Subscription() { reset(); }

    void reset() {
        if (auto end = std::exchange(end_, nullptr)) end();
    }

private:
    std::function<void()> end_;
};

// A list of callbacks that are told of a change. Main thread only. An observer may add or remove observers, itself included,
// while it is being told; one that is removed is not called any more, one that is added is called from the next change on.
template <class Change>
class Observers {
public:
    using Callback = std::function<void(const Change &)>;

    Observers() = default;
    Observers(const Observers &) = delete;
    Observers &operator=(const Observers &) = delete;

    [[nodiscard]] Subscription add(Callback callback) {
        auto entry = std::make_shared<Entry>(Entry{std::move(callback)});
        list_->push_back(entry);
        std::weak_ptr<List> list = list_;
        return Subscription([list, entry] {
            entry->ended = true;
            if (auto alive = list.lock()) std::erase(*alive, entry);
        });
    }

    void notify(const Change &change) const {
        const List copy = *list_;
        for (const auto &entry : copy)
            if (!entry->ended) entry->callback(change);
    }

private:
    // One that ends itself while it is being told lives on until it has returned.
    struct Entry {
        Callback callback;
        bool ended = false;
    };
    using List = std::vector<std::shared_ptr<Entry>>;
    std::shared_ptr<List> list_ = std::make_shared<List>();
};

}  // namespace kiv
