#include "NorvikCore/platform/runtime/NSException.h"

#include "NorvikCore/platform/values/internal/raise.h"

#include <utility>

namespace norvik {

NSException::NSException(std::string name, std::string reason)
    : name_(std::move(name)), reason_(std::move(reason)), what_(name_ + ": " + reason_) {}

NSException::~NSException() = default;

const char* NSException::what() const noexcept { return what_.c_str(); }

namespace detail {

void raise(const char* name, std::string reason) { throw NSException(name, std::move(reason)); }

}  // namespace detail
}  // namespace norvik
