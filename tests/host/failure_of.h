// What a call fails with.
#pragma once

#include "host/terminal/failure.h"

#include <string>
#include <utility>

/// The exit code and the words of the Failure that the call throws; Done and "" when it throws none.
template <class Call> std::pair<host::ExitCode, std::string> failureOf(Call call) {
    try {
        call();
    } catch (const host::Failure &failure) {
        return {failure.code(), failure.what()};
    }
    return {host::ExitCode::Done, ""};
}
