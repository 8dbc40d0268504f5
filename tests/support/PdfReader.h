// tests/support/PdfReader.h - reads a PDF file with another program, poppler's.
//
//   EXPECT_EQ(linesOfPdf(document), (std::vector<std::string>{"Net pay 12.50"}));
#pragma once

#include "tests/support/ChildProgram.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace norvik::test {

/// Runs one of poppler's programs on the file. Returns the lines of its output, without empty lines and without spaces
/// at the ends. A page begins with a form feed, which counts as a space.
inline std::vector<std::string> readPdf(const std::string& program, const std::vector<std::string>& options,
                                        const std::string& pdf, const std::vector<std::string>& after = {}) {
  const TemporaryFolder folder;
  std::vector<std::string> arguments = {program};
  arguments.insert(arguments.end(), options.begin(), options.end());
  arguments.push_back(folder.write("document.pdf", pdf));
  arguments.insert(arguments.end(), after.begin(), after.end());
  ChildProgram reader(arguments);
  const std::string output = reader.readAll() + "\n";
  EXPECT_EQ(reader.wait(), 0) << program;
  std::vector<std::string> lines;
  for (std::size_t from = 0; from < output.size();) {
    const std::size_t to = output.find('\n', from);
    const std::size_t first = output.find_first_not_of(" \f", from);
    if (first < to) lines.push_back(output.substr(first, output.find_last_not_of(' ', to - 1) + 1 - first));
    from = to + 1;
  }
  return lines;
}

/// The text of the pages, line by line.
inline std::vector<std::string> linesOfPdf(const std::string& pdf) {
  return readPdf(NORVIK_PDFTOTEXT, {"-layout", "-enc", "UTF-8"}, pdf, {"-"});
}

}  // namespace norvik::test
