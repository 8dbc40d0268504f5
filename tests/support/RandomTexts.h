// tests/support/RandomTexts.h - random texts for tests that compare an operation with a model of it, and their number.
//
//   RandomTexts random(3, 100'000);      // the seed, and how many inputs a usual run compares
//   for (int i = 0; i < random.inputs(); ++i) ASSERT_EQ(operation(random.of(u"aB ", 8)), ...) << random.at(i);
//
// If NORVIK_TEXT_INPUTS=1000000 is in the environment, each of these tests compares that many inputs, from other seeds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>

namespace norvik::test {

class RandomTexts {
 public:
  RandomTexts(std::uint32_t seed, int usualInputs) : seed_(seed), inputs_(usualInputs) {
    if (const char* asked = std::getenv("NORVIK_TEXT_INPUTS")) {
      seed_ += 1000;
      inputs_ = std::atoi(asked);
    }
    engine_.seed(seed_);
  }

  [[nodiscard]] int inputs() const { return inputs_; }
  [[nodiscard]] std::size_t upTo(std::size_t most) {
    return std::uniform_int_distribution<std::size_t>(0, most)(engine_);
  }
  /// At most `most` units, each from the alphabet.
  [[nodiscard]] std::u16string of(std::u16string_view alphabet, std::size_t most) {
    std::u16string units;
    for (std::size_t length = upTo(most); units.size() < length;) units += alphabet[upTo(alphabet.size() - 1)];
    return units;
  }
  /// The seed and the input, for the message of a failure.
  [[nodiscard]] std::string at(int input) const {
    return "seed " + std::to_string(seed_) + ", input " + std::to_string(input);
  }

 private:
  std::uint32_t seed_;
  int inputs_;
  std::mt19937 engine_;
};

}  // namespace norvik::test
