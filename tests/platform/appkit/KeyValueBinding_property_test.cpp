// Compares bindings among a few cells with a model: after any list of operations, every cell has the value of the last
// set that reached it, along bindings in either direction.
#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>

#include "NorvikCore/platform/appkit/KeyValueBinding.h"

namespace norvik {
namespace {

class Cell : public NSObject {
  NK_OBJECT(Cell, NSObject)
  NK_PROPERTY(int, value, setValue)
};

constexpr std::size_t cellCount = 7;
constexpr std::size_t none = cellCount;

struct Model {
  std::array<int, cellCount> values{};
  std::array<std::size_t, cellCount> boundTo;

  Model() { boundTo.fill(none); }

  /// Gives the value of this cell to every cell that is connected with it by bindings.
  void spreadFrom(std::size_t cell) {
    std::array<bool, cellCount> reached{};
    reached[cell] = true;
    for (bool grows = true; grows;) {
      grows = false;
      for (std::size_t i = 0; i < cellCount; ++i) {
        const std::size_t other = boundTo[i];
        if (other == none || reached[i] == reached[other]) continue;
        reached[i] = reached[other] = grows = true;
      }
    }
    for (std::size_t i = 0; i < cellCount; ++i) {
      if (reached[i]) values[i] = values[cell];
    }
  }
  void renew(std::size_t cell) {
    values[cell] = 0;
    boundTo[cell] = none;
    for (std::size_t& other : boundTo) {
      if (other == cell) other = none;
    }
  }
};

class Simulation {
 public:
  explicit Simulation(std::uint32_t seed) : engine_(seed) {
    for (auto& cell : cells_) cell = make<Cell>();
  }

  void step() {
    const std::size_t one = upTo(cellCount - 1), other = upTo(cellCount - 1);
    switch (upTo(9)) {
      case 0:
        did_ += " unbind " + std::to_string(one);
        unbind(*cells_[one], "value");
        model_.boundTo[one] = none;
        break;
      case 1:
        did_ += " renew " + std::to_string(one);
        cells_[one] = make<Cell>();
        model_.renew(one);
        break;
      case 2:
      case 3:
      case 4:
        did_ += " bind " + std::to_string(one) + " to " + std::to_string(other);
        bind_toObject_withKeyPath_options(*cells_[one], "value", *cells_[other], "value", nullptr);
        model_.boundTo[one] = other;
        model_.spreadFrom(other);
        break;
      default: {
        const int value = static_cast<int>(upTo(1000));
        did_ += " set " + std::to_string(one) + " " + std::to_string(value);
        cells_[one]->setValue(value);
        model_.values[one] = value;
        model_.spreadFrom(one);
      }
    }
  }

  void check() const {
    for (std::size_t i = 0; i < cellCount; ++i) {
      ASSERT_EQ(cells_[i]->value(), model_.values[i]) << "cell " << i << " after" << did_;
      ASSERT_EQ(static_cast<bool>(infoForBinding(*cells_[i], "value")), model_.boundTo[i] != none) << did_;
    }
  }

  /// After all bindings have ended, no cell is observed.
  void end() {
    for (auto& cell : cells_) unbind(*cell, "value");
    for (auto& cell : cells_) EXPECT_FALSE(cell->isObserved()) << did_;
  }

 private:
  std::size_t upTo(std::size_t most) { return std::uniform_int_distribution<std::size_t>(0, most)(engine_); }

  std::mt19937 engine_;
  std::array<Ref<Cell>, cellCount> cells_;
  Model model_;
  std::string did_;
};

TEST(KeyValueBindingProperty, CellsAndModelAgreeAfterAnyListOfOperations) {
  for (std::uint32_t seed = 0; seed < 200; ++seed) {
    Simulation run(seed);
    for (int i = 0; i < 40; ++i) {
      run.step();
      run.check();
      if (HasFatalFailure()) FAIL() << "seed " << seed;
    }
    run.end();
  }
}

}  // namespace
}  // namespace norvik
