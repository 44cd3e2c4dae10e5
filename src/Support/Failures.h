#pragma once

#include <exception>
#include <string>

namespace kiv {

// What is to be known of the exception that ended a job. Pure functions of one that is not null; any thread.

template <class Error>
bool isA(const std::exception_ptr &failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const Error &) {
        return true;
    } catch (...) {
        return false;
    }
}

// By whoever no longer wanted the job, who need not be told.
bool wasCancelled(const std::exception_ptr &failure);

// What the user is told: one line.
std::string errorText(const std::exception_ptr &failure);

}  // namespace kiv
