// programs/norvik-log/HtmlOutput.h - the messages as one HTML page. The page loads nothing and can be searched: it has
// a box for text, a choice of level, and the number of messages that remain.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "Output.h"
#include "programs/common/OutputFile.h"

namespace norvik_log {

class HtmlOutput : public Output {
 public:
  /// Times are shown as wall times of the clock; the page names its zone. Throws std::system_error.
  HtmlOutput(const std::filesystem::path& path, const WallClock& clock, std::string_view zone);

  void add(const Record& record) override;
  /// Publishes the page under its name.
  void finish() override;

 private:
  void write();

  programs::WholeFile file_;
  const WallClock clock_;
  std::string text_, held_;
};

/// Appends text for use within an element or a quoted attribute. Control characters become escapes.
void appendHtml(std::string& result, std::string_view text);

}  // namespace norvik_log
