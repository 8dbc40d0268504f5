// NorvikCore/platform/runtime/NSException.h - the platform's exception: a name to tell kinds apart and a reason to
// read.
#pragma once

#include "NorvikCore/platform/export.h"

#include <exception>
#include <string>

namespace norvik {

class NK_EXPORT NSException : public std::exception {
 public:
  NSException(std::string name, std::string reason);
  ~NSException() override;

  [[nodiscard]] const std::string& name() const noexcept { return name_; }
  [[nodiscard]] const std::string& reason() const noexcept { return reason_; }
  [[nodiscard]] const char* what() const noexcept override;

 private:
  std::string name_, reason_, what_;
};

}  // namespace norvik
