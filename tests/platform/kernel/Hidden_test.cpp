#include "NorvikCore/platform/kernel/Hidden.h"

#include <gtest/gtest.h>

#include <utility>

using norvik::detail::Hidden;

namespace {

struct Element {
  static inline int alive = 0;
  Element() { ++alive; }
  ~Element() { --alive; }
  Element(const Element&) = delete;
  Element& operator=(const Element&) = delete;
};

struct Part {
  explicit Part(int& alive) : count(alive) { ++count; }
  ~Part() { --count; }
  Part(const Part&) = delete;
  Part& operator=(const Part&) = delete;
  int& count;
};

}  // namespace

TEST(Hidden, TheOwnerTakesItsPartAlong) {
  int alive = 0;
  {
    const Hidden<Part> owner(new Part(alive));
    EXPECT_TRUE(owner);
    EXPECT_EQ(&owner->count, &alive);
    EXPECT_EQ(alive, 1);
  }
  EXPECT_EQ(alive, 0);
}

TEST(Hidden, MovingHandsThePartOver) {
  int alive = 0;
  Hidden<Part> first(new Part(alive));
  Hidden<Part> second = std::move(first);
  EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move): what a move leaves is what is tested
  first = Hidden<Part>(new Part(alive));
  EXPECT_EQ(alive, 2);
  first = std::move(second);
  EXPECT_EQ(alive, 1);
  first.reset();
  EXPECT_FALSE(first);
  EXPECT_EQ(alive, 0);
}

TEST(Hidden, EveryElementOfAnArrayIsDestroyedOnce) {
  {
    Hidden<Element[]> owner(new Element[3]);
    Hidden<Element[]> other = std::move(owner);
    EXPECT_FALSE(owner);  // NOLINT(bugprone-use-after-move): what a move leaves is what is tested
    EXPECT_TRUE(other);
    other = Hidden<Element[]>(new Element[2]);
    EXPECT_EQ(Element::alive, 2);
    owner = std::move(other);
    EXPECT_EQ(Element::alive, 2);
    EXPECT_EQ(other.get(), nullptr);  // NOLINT(bugprone-use-after-move): as above
  }
  EXPECT_EQ(Element::alive, 0);
}
