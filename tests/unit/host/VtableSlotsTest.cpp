#include <gtest/gtest.h>

#include "tests/support/VtableSlots.h"

namespace {

using support::slotOf;

struct First {
  virtual ~First() = default;
  virtual void one() = 0;
  virtual int two(int) const = 0;
  void plain() {}
};

struct Second {
  virtual void other() = 0;

 protected:
  ~Second() = default;
};

struct Both : First, Second {
  virtual void own() = 0;
  void other() override {}
};

struct Swapped {
  virtual ~Swapped() = default;
  virtual int two(int) const = 0;
  virtual void one() = 0;
};

TEST(VtableSlots, TheDestructorTakesTheFirstTwo) {
  EXPECT_EQ(slotOf(&First::one), 2);
  EXPECT_EQ(slotOf(&First::two), 3);
}

TEST(VtableSlots, AnOtherOrderGivesOtherNumbers) {
  EXPECT_EQ(slotOf(&Swapped::two), 2);
  EXPECT_EQ(slotOf(&Swapped::one), 3);
}

TEST(VtableSlots, APlainOperationHasNone) { EXPECT_EQ(slotOf(&First::plain), -1); }

TEST(VtableSlots, AnOverrideOfASecondBaseContinuesThePrimaryTable) {
  EXPECT_EQ(slotOf(&Both::own), 4);
  EXPECT_EQ(slotOf(&Both::other), 5);
  EXPECT_EQ(slotOf(&Second::other), 0);
}

}  // namespace
