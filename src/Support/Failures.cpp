#include "Support/Failures.h"

#include <new>

#include "Support/Progress.h"

namespace kiv {

bool wasCancelled(const std::exception_ptr &failure) { return isA<Cancelled>(failure); }

std::string errorText(const std::exception_ptr &failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const std::bad_alloc &) {
        return "There is not enough memory.";
    } catch (const std::exception &error) {
        return error.what();
    } catch (...) {
        return "An unknown error occurred.";
    }
}

}  // namespace kiv
