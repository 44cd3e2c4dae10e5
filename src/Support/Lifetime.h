#pragma once

#include <memory>
#include <utility>

namespace kiv {

// A member of an object whose jobs and questions may be answered when it is gone. Declared last, so that it ends first. One
// thread only.
class Lifetime {
public:
    Lifetime() = default;
    Lifetime(const Lifetime &) = delete;
    Lifetime &operator=(const Lifetime &) = delete;

    // The call; it does nothing once the object is gone.
    template <class Call>
    auto guard(Call call) const {
        return [life = watch(), call = std::move(call)](auto &&...arguments) {
            if (!life.expired()) call(std::forward<decltype(arguments)>(arguments)...);
        };
    }
    // Expires with the object: for calls of others in which it may end.
    std::weak_ptr<const void> watch() const { return life_; }

private:
    std::shared_ptr<const void> life_ = std::make_shared<char>();
};

}  // namespace kiv
