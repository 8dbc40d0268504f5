// programs/norvik-log/HtmlOutput.h - the messages as one page, which loads nothing and can be searched: a box for text,
// a choice of level, and how many messages they leave.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "Output.h"
#include "programs/common/OutputFile.h"

namespace norvik_log {

class HtmlOutput : public Output {
 public:
  /// Times are shown as the clock has them, whose zone's name stands on the page. Throws std::system_error.
  HtmlOutput(const std::filesystem::path& path, const WallClock& clock, std::string_view zone);

  void add(const Record& record) override;
  /// The page has its name from here on.
  void finish() override;

 private:
  void write();

  programs::WholeFile file_;
  const WallClock clock_;
  std::string text_, held_;
};

/// Within an element or an attribute in quotation marks; control characters as escapes.
void appendHtml(std::string& result, std::string_view text);

}  // namespace norvik_log
