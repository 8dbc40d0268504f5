#include "NorvikCore/logging/internal/ConsoleColors.h"

#include "NorvikCore/platform/kernel/MadeOnce.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace norvik::detail {
namespace {

/// In the order of the codes 30 to 37, then the bright colours.
constexpr ConsoleColor colors16[] = {
    {0, 0, 0},      {194, 54, 33},   {37, 188, 36},   {173, 173, 39},  {73, 46, 225}, {211, 56, 211},
    {51, 187, 200}, {203, 204, 205}, {129, 131, 131}, {252, 57, 31},   {49, 231, 34}, {234, 236, 35},
    {88, 51, 255},  {249, 53, 248},  {20, 240, 240},  {233, 235, 235},
};

/// Terminal colours 16 to 255: a cube of six levels of red, green and blue (blue changes fastest), then 24 greys.
///
/// The first six rows and the last are the colours that a terminal shows for these numbers, not the ones that the
/// cube's rule gives (0, 0, 0 to 0, 0, 255, and 238, 238, 238). The other rows are derived from them. The corners of
/// the cube are the bright colours of the set of 16, as number 21 is its bright blue; white is 254, 255, 255. Colours
/// between the corners are interpolated with the weights 0, 0.461, 0.65, 0.84, 0.99 and 1, which are the levels of blue
/// in the first six rows. The greys are spaced between black and the last row according to their levels, 8 to 238.
constexpr ConsoleColor colors256[] = {
    {47, 49, 49},    {60, 42, 144},   {66, 44, 183},   {73, 46, 222},   {81, 50, 253},   {88, 51, 255},
    {48, 133, 42},   {52, 135, 137},  {54, 136, 176},  {55, 137, 215},  {57, 138, 246},  {57, 138, 248},
    {48, 167, 39},   {46, 170, 134},  {45, 172, 173},  {45, 173, 212},  {44, 174, 243},  {44, 174, 245},
    {49, 202, 36},   {40, 206, 131},  {37, 207, 170},  {34, 208, 209},  {31, 210, 240},  {31, 210, 242},
    {49, 229, 34},   {36, 233, 129},  {31, 235, 168},  {25, 237, 207},  {21, 238, 238},  {21, 238, 240},
    {49, 231, 34},   {36, 235, 129},  {30, 237, 168},  {25, 239, 207},  {20, 240, 238},  {20, 240, 240},
    {142, 53, 41},   {151, 52, 138},  {155, 52, 178},  {159, 52, 218},  {162, 52, 250},  {162, 52, 252},
    {138, 136, 38},  {142, 139, 135}, {144, 140, 175}, {145, 141, 216}, {146, 142, 247}, {146, 142, 250},
    {137, 170, 37},  {138, 174, 134}, {139, 176, 174}, {139, 177, 215}, {140, 179, 246}, {140, 179, 249},
    {135, 204, 35},  {134, 210, 133}, {134, 212, 173}, {134, 214, 214}, {133, 216, 246}, {133, 216, 248},
    {134, 231, 35},  {132, 238, 132}, {130, 240, 173}, {129, 243, 213}, {128, 245, 245}, {128, 245, 247},
    {134, 233, 34},  {131, 240, 132}, {130, 242, 173}, {129, 245, 213}, {128, 247, 245}, {128, 247, 247},
    {180, 54, 37},   {186, 53, 136},  {188, 53, 176},  {191, 53, 216},  {193, 52, 248},  {193, 52, 250},
    {175, 137, 36},  {179, 140, 135}, {180, 141, 175}, {182, 142, 216}, {183, 143, 248}, {183, 143, 250},
    {173, 171, 36},  {176, 176, 134}, {177, 177, 175}, {178, 179, 216}, {179, 181, 248}, {179, 181, 250},
    {171, 205, 35},  {173, 211, 134}, {174, 214, 175}, {175, 216, 215}, {175, 218, 248}, {175, 218, 250},
    {169, 232, 35},  {171, 240, 134}, {171, 242, 174}, {172, 245, 215}, {172, 248, 248}, {172, 248, 250},
    {169, 234, 35},  {171, 241, 134}, {171, 244, 174}, {172, 247, 215}, {172, 250, 248}, {172, 250, 250},
    {219, 56, 34},   {221, 54, 133},  {222, 54, 174},  {223, 53, 215},  {223, 53, 247},  {223, 53, 249},
    {212, 138, 34},  {216, 141, 134}, {217, 143, 175}, {219, 144, 216}, {220, 145, 249}, {220, 145, 251},
    {210, 172, 35},  {214, 177, 134}, {216, 179, 175}, {217, 181, 217}, {219, 183, 249}, {219, 183, 251},
    {207, 206, 35},  {212, 213, 135}, {214, 216, 176}, {216, 218, 217}, {218, 220, 250}, {218, 221, 252},
    {205, 233, 35},  {210, 241, 135}, {212, 245, 176}, {215, 248, 218}, {217, 250, 250}, {217, 251, 253},
    {204, 235, 35},  {210, 243, 135}, {212, 247, 176}, {215, 250, 218}, {216, 252, 250}, {217, 253, 253},
    {250, 57, 31},   {249, 55, 131},  {248, 54, 172},  {248, 54, 213},  {247, 53, 246},  {247, 53, 248},
    {242, 139, 33},  {245, 142, 134}, {247, 144, 175}, {248, 145, 216}, {249, 146, 249}, {249, 146, 251},
    {238, 173, 34},  {244, 178, 135}, {246, 180, 176}, {248, 182, 217}, {250, 184, 250}, {250, 184, 252},
    {235, 207, 34},  {242, 214, 136}, {245, 217, 177}, {248, 220, 219}, {251, 222, 252}, {251, 223, 254},
    {232, 234, 35},  {241, 243, 136}, {245, 246, 178}, {249, 250, 220}, {251, 253, 253}, {252, 253, 255},
    {232, 236, 35},  {241, 245, 136}, {245, 248, 178}, {249, 252, 220}, {251, 255, 253}, {252, 255, 255},
    {252, 57, 31},   {251, 55, 131},  {250, 54, 172},  {249, 54, 213},  {249, 53, 246},  {249, 53, 248},
    {244, 140, 33},  {247, 143, 134}, {249, 144, 175}, {250, 145, 216}, {251, 146, 249}, {251, 146, 251},
    {240, 173, 34},  {246, 178, 135}, {248, 180, 176}, {250, 183, 218}, {252, 184, 250}, {252, 184, 253},
    {237, 207, 34},  {244, 214, 136}, {247, 217, 177}, {251, 220, 219}, {253, 223, 252}, {253, 223, 254},
    {234, 234, 35},  {243, 243, 136}, {247, 246, 178}, {251, 250, 220}, {254, 253, 253}, {254, 253, 255},
    {234, 236, 35},  {243, 245, 136}, {247, 248, 178}, {251, 252, 220}, {254, 255, 253}, {254, 255, 255},
    {53, 55, 55},    {62, 64, 64},    {70, 72, 72},    {78, 80, 80},    {86, 88, 88},    {94, 96, 96},
    {102, 104, 104}, {110, 112, 112}, {118, 120, 120}, {126, 128, 128}, {135, 137, 137}, {143, 145, 145},
    {151, 153, 153}, {159, 161, 161}, {167, 169, 169}, {175, 177, 177}, {183, 185, 185}, {191, 193, 193},
    {199, 201, 201}, {208, 210, 210}, {216, 218, 218}, {224, 226, 226}, {232, 234, 234}, {240, 242, 242},
};
static_assert(std::size(colors16) == 16 && std::size(colors256) == 240);

constexpr int firstNumber = 16;  // of colors256

constinit std::atomic<const std::span<const ConsoleColor>*> loaded{nullptr};
constexpr std::span<const ConsoleColor> table16(colors16), table256(colors256);

void load(const std::span<const ConsoleColor>& table) noexcept {
  const std::span<const ConsoleColor>* none = nullptr;
  loaded.compare_exchange_strong(none, &table, std::memory_order_acq_rel);
}

/// `word` must be in lower case.
bool containsWord(std::string_view text, std::string_view word) noexcept {
  const auto isSame = [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b; };
  return std::search(text.begin(), text.end(), word.begin(), word.end(), isSame) != text.end();
}

ConsoleMode modeOfEnvironment() {
  if (const char* terminal = std::getenv("TERM")) {
    if (!containsWord(terminal, "color")) return ConsoleMode::plain;
    if (containsWord(terminal, "256")) {
      loadConsoleColors256();
    } else {
      loadConsoleColors16();
    }
    return ConsoleMode::terminal;
  }
  const char* const plugIn = std::getenv("XcodeColors");
  return plugIn && std::strcmp(plugIn, "YES") == 0 ? ConsoleMode::plugIn : ConsoleMode::plain;
}

std::string codeOf(std::size_t row, int base, const char* ofNumber) {
  if (consoleColors().data() == colors256) return ofNumber + std::to_string(firstNumber + static_cast<int>(row)) + "m";
  return (row >= 8 ? "1;" : "") + std::to_string(base + static_cast<int>(row % 8)) + "m";
}

}  // namespace

ConsoleMode consoleMode() {
  return kernel::madeOnce([] { return new ConsoleMode(modeOfEnvironment()); });
}

void loadConsoleColors16() noexcept { load(table16); }
void loadConsoleColors256() noexcept { load(table256); }

std::span<const ConsoleColor> consoleColors() noexcept {
  const std::span<const ConsoleColor>* table = loaded.load(std::memory_order_acquire);
  return table ? *table : std::span<const ConsoleColor>();
}

std::size_t nearestConsoleColor(double red, double green, double blue) noexcept {
  const std::span<const ConsoleColor> colors = consoleColors();
  std::size_t best = 0;
  double bestDistance = 100;
  for (std::size_t row = 0; row < colors.size(); ++row) {
    const double byRed = red - colors[row].red / 255.0;
    const double byGreen = green - colors[row].green / 255.0;
    const double byBlue = blue - colors[row].blue / 255.0;
    const double distance = std::sqrt(byRed * byRed + byGreen * byGreen + byBlue * byBlue);
    if (distance < bestDistance) {
      bestDistance = distance;
      best = row;
    }
  }
  return best;
}

std::string consoleForegroundCode(std::size_t row) { return codeOf(row, 30, "38;5;"); }
std::string consoleBackgroundCode(std::size_t row) { return codeOf(row, 40, "48;5;"); }

}  // namespace norvik::detail
