#include <gmock/gmock.h>

#include <QByteArray>
#include <climits>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "persistence/RFCBase64Codec.h"
#include "tests/support/VtableSlots.h"

namespace kv64 {
namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

// An interface without data, and a codec with none of its own.
static_assert(std::is_abstract_v<Base64Codec>);
static_assert(sizeof(Base64Codec) == sizeof(void*));
static_assert(sizeof(RFCBase64Codec) == sizeof(void*));

std::string encoded(std::string bytes) { return RFCBase64Codec().encode(std::move(bytes)); }

/// The result of `decode` as a value that compares.
struct Decoded {
  bool isArray = false;
  int length = -1;
  std::string bytes;  ///< the whole array, including the zero bytes after the length

  bool operator==(const Decoded&) const = default;
};

Decoded decoded(const std::string& text) {
  Decoded result;
  const std::unique_ptr<char[]> bytes(RFCBase64Codec().decode(text, &result.length));
  result.isArray = bytes != nullptr;
  if (bytes) result.bytes.assign(bytes.get(), text.size() / 4 * 3);
  return result;
}

const Decoded kRejected{false, 0, ""};

Decoded bytesWithLength(std::string bytes, int length) { return {true, length, std::move(bytes)}; }

std::string bytesOf(const Decoded& decoded) {
  return decoded.bytes.substr(0, static_cast<std::size_t>(decoded.length));
}

std::string randomBytes(std::mt19937& random, std::size_t size) {
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

TEST(RFCBase64Codec, EncodesTheShortTextsOfTheStandard) {
  EXPECT_EQ(encoded(""), "");
  EXPECT_EQ(encoded("f"), "Zg==");
  EXPECT_EQ(encoded("fo"), "Zm8=");
  EXPECT_EQ(encoded("foo"), "Zm9v");
  EXPECT_EQ(encoded("foob"), "Zm9vYg==");
  EXPECT_EQ(encoded("fooba"), "Zm9vYmE=");
  EXPECT_EQ(encoded("foobar"), "Zm9vYmFy");
}

TEST(RFCBase64Codec, WritesMinusAndUnderscoreForTheLastTwoValues) {
  EXPECT_EQ(encoded("\xFB\xFF"), "-_8=");
}

TEST(RFCBase64Codec, EncodesEveryValueOfTheAlphabetInOrder) {
  std::string bytes;
  for (unsigned value = 0; value < 64; value += 4) {
    const unsigned group = value << 18 | (value + 1) << 12 | (value + 2) << 6 | (value + 3);
    bytes += static_cast<char>(group >> 16);
    bytes += static_cast<char>(group >> 8);
    bytes += static_cast<char>(group);
  }
  EXPECT_EQ(encoded(bytes), kAlphabet);
}

TEST(RFCBase64Codec, EncodesZeroBytesLikeAnyOther) {
  EXPECT_EQ(encoded(std::string(1, '\0')), "AA==");
  EXPECT_EQ(encoded(std::string(3, '\0')), "AAAA");
}

TEST(RFCBase64Codec, EncodesAsAnotherCodecDoesAtEveryLength) {
  std::mt19937 random(1);
  for (std::size_t size = 0; size < 500; ++size) {
    const std::string bytes = randomBytes(random, size);
    const auto expected =
        QByteArray(bytes.data(), static_cast<int>(size)).toBase64(QByteArray::Base64UrlEncoding);
    ASSERT_EQ(encoded(bytes), expected.toStdString()) << "size " << size;
  }
}

TEST(RFCBase64Codec, WritesNoLineBreakHoweverLongTheOutput) {
  EXPECT_EQ(encoded(std::string(300'000, 'x')).find_first_not_of(kAlphabet), std::string::npos);
}

TEST(RFCBase64Codec, EncodesOnlyAsManyBytesAsItIsTold) {
  std::string bytes = "foobar";
  EXPECT_EQ(RFCBase64Codec().encode(bytes.data(), 4), "Zm9vYg==");
  EXPECT_EQ(RFCBase64Codec().encode(bytes.data(), 0), "");
}

TEST(RFCBase64Codec, EncodesNothingForANegativeLength) {
  std::string bytes = "foobar";
  EXPECT_EQ(RFCBase64Codec().encode(bytes.data(), -1), "");
  EXPECT_EQ(RFCBase64Codec().encode(bytes.data(), INT_MIN), "");
}

TEST(RFCBase64Codec, EncodesNothingForNoArray) {
  EXPECT_EQ(RFCBase64Codec().encode(nullptr, 0), "");
  EXPECT_EQ(RFCBase64Codec().encode(nullptr, 3), "");
}

class CountingCodec : public RFCBase64Codec {
 public:
  using RFCBase64Codec::encode;
  std::string encode(char* data, int length) override {
    given.assign(data, static_cast<std::size_t>(length));
    return "counted";
  }
  std::string given;
};

TEST(RFCBase64Codec, EncodesAStringThroughTheArrayForm) {
  CountingCodec codec;
  Base64Codec& interface = codec;
  EXPECT_EQ(interface.encode(std::string("a\0b", 3)), "counted");
  EXPECT_EQ(codec.given, std::string("a\0b", 3));
}

TEST(RFCBase64Codec, HasTheSlotsOfTheInterfaceInTheirOrder) {
  using support::slotOf;
  using ArrayForm = std::string (Base64Codec::*)(char*, int);
  using TextForm = std::string (Base64Codec::*)(std::string);
  EXPECT_EQ(slotOf(static_cast<ArrayForm>(&Base64Codec::encode)), 0);
  EXPECT_EQ(slotOf(static_cast<TextForm>(&Base64Codec::encode)), 1);
  EXPECT_EQ(slotOf(&Base64Codec::decode), 2);
  EXPECT_EQ(slotOf(&RFCBase64Codec::encodeBlock), -1);
  EXPECT_EQ(slotOf(&RFCBase64Codec::decodeBlock), -1);
  EXPECT_EQ(slotOf(&RFCBase64Codec::charValue), -1);
}

TEST(RFCBase64Codec, DecodesTheShortTextsOfTheStandard) {
  EXPECT_EQ(decoded("Zg=="), bytesWithLength({'f', 0, 0}, 1));
  EXPECT_EQ(decoded("Zm8="), bytesWithLength({'f', 'o', 0}, 2));
  EXPECT_EQ(decoded("Zm9v"), bytesWithLength("foo", 3));
  EXPECT_EQ(decoded("Zm9vYmFy"), bytesWithLength("foobar", 6));
}

TEST(RFCBase64Codec, RejectsATextThatIsEmptyOrNotAMultipleOfFour) {
  EXPECT_EQ(decoded(""), kRejected);
  EXPECT_EQ(decoded("Z"), kRejected);
  EXPECT_EQ(decoded("Zg"), kRejected);
  EXPECT_EQ(decoded("Zg="), kRejected);
  EXPECT_EQ(decoded("Zm9vZ"), kRejected);
}

TEST(RFCBase64Codec, DecodesAGroupWithAForeignCharacterToZeroBytes) {
  EXPECT_EQ(decoded("Zm+v"), bytesWithLength({0, 0, 0}, 3));
  EXPECT_EQ(decoded("Zm9vZm/vYmFy"), bytesWithLength({'f', 'o', 'o', 0, 0, 0, 'b', 'a', 'r'}, 9));
  EXPECT_EQ(decoded("Zm9\n"), bytesWithLength({0, 0, 0}, 3));
  EXPECT_EQ(decoded("\xC3\xA4\xC3\xA4"), bytesWithLength({0, 0, 0}, 3));
  EXPECT_EQ(decoded(std::string("Zm\0v", 4)), bytesWithLength({0, 0, 0}, 3));
}

TEST(RFCBase64Codec, DropsTheBitsThatAPaddedGroupHasTooMany) {
  EXPECT_EQ(decoded("Zv=="), bytesWithLength({'f', 0, 0}, 1));
  EXPECT_EQ(decoded("Zm_="), bytesWithLength({'f', 'o', 0}, 2));
}

TEST(RFCBase64Codec, TreatsPaddingAnywhereElseAsAForeignCharacter) {
  EXPECT_EQ(decoded("=g=="), bytesWithLength({0, 0, 0}, 1));
  EXPECT_EQ(decoded("Z==="), bytesWithLength({0, 0, 0}, 1));
  EXPECT_EQ(decoded("===="), bytesWithLength({0, 0, 0}, 1));
  EXPECT_EQ(decoded("Zg=v"), bytesWithLength({0, 0, 0}, 3));
  EXPECT_EQ(decoded("Z=9v"), bytesWithLength({0, 0, 0}, 3));
  EXPECT_EQ(decoded("Z=8="), bytesWithLength({0, 0, 0}, 2));
}

TEST(RFCBase64Codec, DecodesAPaddedGroupInTheMiddleWhereItStands) {
  EXPECT_EQ(decoded("Zg==Zm9v"), bytesWithLength({'f', 0, 0, 'f', 'o', 'o'}, 6));
  EXPECT_EQ(decoded("Zm8=Zg=="), bytesWithLength({'f', 'o', 0, 'f', 0, 0}, 4));
}

TEST(RFCBase64Codec, ReadsBackWhatItWritesAtEveryLength) {
  std::mt19937 random(2);
  for (std::size_t size = 1; size < 500; ++size) {
    const std::string bytes = randomBytes(random, size);
    ASSERT_EQ(bytesOf(decoded(encoded(bytes))), bytes) << "size " << size;
  }
}

/// The value by a plain search of the alphabet.
int searchedValue(char c) {
  const std::size_t position = kAlphabet.find(c);
  return position == std::string_view::npos ? -1 : static_cast<int>(position);
}

TEST(RFCBase64Codec, KnowsTheValueOfEveryCharacter) {
  for (int c = CHAR_MIN; c <= CHAR_MAX; ++c) {
    EXPECT_EQ(RFCBase64Codec().charValue(static_cast<char>(c)), searchedValue(static_cast<char>(c)))
        << c;
  }
  EXPECT_EQ(RFCBase64Codec().charValue('A'), 0);
  EXPECT_EQ(RFCBase64Codec().charValue('_'), 63);
  EXPECT_EQ(RFCBase64Codec().charValue('='), -1);
}

TEST(RFCBase64Codec, EncodesABlockOverItsPadding) {
  std::string group = "foo";
  RFCBase64Codec codec;
  EXPECT_EQ(codec.encodeBlock(group.data(), 1), "Zg==");
  EXPECT_EQ(codec.encodeBlock(group.data(), 2), "Zm8=");
  EXPECT_EQ(codec.encodeBlock(group.data(), 3), "Zm9v");
  EXPECT_EQ(codec.encodeBlock(group.data(), 0), "====");
}

std::string blockOver(const std::string& before, const std::string& quad) {
  std::string out = before;
  RFCBase64Codec().decodeBlock(quad, out.data());
  return out;
}

TEST(RFCBase64Codec, DecodesABlockToItsBytesAndAZeroByteAfterThem) {
  EXPECT_EQ(blockOver("...", "Zm9v"), "foo");
  EXPECT_EQ(blockOver("...", "Zm8="), std::string("fo\0", 3));
  EXPECT_EQ(blockOver("...", "Zg=="), std::string("f\0.", 3));
}

TEST(RFCBase64Codec, WritesNothingForABlockThatCannotBeDecoded) {
  for (const char* quad : {"Zm+v", "Zm9=v", "Zg=", "", "=m9v", "Z===", "Zg=v"}) {
    EXPECT_EQ(blockOver("...", quad), "...") << quad;
  }
}

}  // namespace
}  // namespace kv64
