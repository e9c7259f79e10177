#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <vector>

#include "kvsc/CredentialText.h"

namespace kvsc {
namespace {

constexpr MaskedText kNothing{nullptr, 0, 1};

TEST(CredentialText, StartsEmpty) { EXPECT_EQ(CredentialText().text(), ""); }

TEST(CredentialText, RemovesTheMask) {
  // Worked out by hand: the states after 1 are 0x41c67ea6 and 0x167eb0e7.
  const unsigned char masked[] = {0xc6 ^ 'o', 0x7e ^ 'k'};
  CredentialText text;
  text.produce({masked, 2, 1});
  EXPECT_EQ(text.text(), "ok");
}

TEST(CredentialText, ContainsOnlyTheLastText) {
  CredentialText text;
  text.produce(credentials::kProductionKey);
  text.produce(kNothing);
  EXPECT_EQ(text.text(), "");
  const char* bytes = reinterpret_cast<const char*>(&text);
  EXPECT_TRUE(std::all_of(bytes, bytes + CredentialText::kCapacity, [](char c) { return c == 0; }));
}

TEST(CredentialText, CutsOffWhatDoesNotFit) {
  const std::vector<unsigned char> masked(CredentialText::kCapacity + 100, 0x55);
  CredentialText text;
  text.produce({masked.data(), static_cast<unsigned>(masked.size()), 1});
  EXPECT_EQ(text.text().size(), CredentialText::kCapacity);
}

TEST(CredentialText, OverwritesItselfWithOnes) {
  alignas(CredentialText) unsigned char place[sizeof(CredentialText)] = {};
  auto* text = new (place) CredentialText;
  text->produce(credentials::kProductionKey);
  text->~CredentialText();
  const volatile unsigned char* left = place;
  for (std::size_t i = 0; i < CredentialText::kCapacity; ++i) ASSERT_EQ(left[i], 0xff) << i;
}

}  // namespace
}  // namespace kvsc
