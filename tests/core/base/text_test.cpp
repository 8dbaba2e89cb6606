#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <set>

#include "base/base64.h"
#include "base/color.h"
#include "base/shortened.h"
#include "base/time_text.h"
#include "base/utf8_text.h"
#include "base/uuid.h"

namespace tembrix {
namespace {

TEST(Uuid, ReadsAnyCaseWritesUpperCaseAndRejectsOtherForms) {
    const auto id = Uuid::parse("0123abcd-89EF-4567-9abc-DEF012345678");
    ASSERT_TRUE(id);
    EXPECT_EQ(id->text(), "0123ABCD-89EF-4567-9ABC-DEF012345678");
    EXPECT_EQ(Uuid::parse(id->text()), id);
    for (const auto* bad :
         {"", "0123ABCD89EF45679ABCDEF012345678", "{123ABCD-89EF-4567-9ABC-DEF01234567}",
          "0123ABCD-89EF-4567-9ABC-DEF01234567", "0123ABCD-89EF-4567-9ABC-DEF0123456789",
          "0123ABCG-89EF-4567-9ABC-DEF012345678", "0123ABCD-89EF-4567-9ABC+DEF012345678",
          "0123ABCD-89EF-4567-9ABC-DEF01234567\xD0"})
        EXPECT_FALSE(Uuid::parse(bad)) << bad;
}

TEST(Uuid, RandomOnesDifferAndSayThatTheyAreRandom) {
    std::set<Uuid> seen;
    for (int i = 0; i < 1000; ++i) {
        const Uuid id = Uuid::random();
        EXPECT_TRUE(seen.insert(id).second);
        EXPECT_EQ(id.text()[14], '4');
        EXPECT_NE(std::string("89AB").find(id.text()[19]), std::string::npos);
    }
}

TEST(Base64, RoundTripsEveryLengthAndByte) {
    EXPECT_EQ(base64Encode(toBytes("foobar")), "Zm9vYmFy");
    EXPECT_EQ(base64Encode(toBytes("fooba")), "Zm9vYmE=");
    EXPECT_EQ(base64Encode(toBytes("foob")), "Zm9vYg==");
    Bytes bytes;
    for (int i = 0; i < 600; ++i) {
        EXPECT_EQ(base64Decode(base64Encode(bytes)), bytes);
        bytes.push_back(static_cast<std::uint8_t>(i * 7));
    }
}

TEST(Base64, RefusesWhatNoEncoderWrites) {
    for (const auto* bad : {"Zm9", "Zm9vYg=", "Zm9v Yg==", "Zm9vYh==", "Zm9vYmF=", "====", "Z===",
                            "Zg==Zm9v", "Zm-v", "Zm9v\n"})
        EXPECT_FALSE(base64Decode(bad)) << bad;
}

TEST(Color, ParsesEveryLengthLeniently) {
    const Color orange{1, 128 / 255.0, 0, 1};
    EXPECT_EQ(parseHexColor("FF8000"), orange);
    EXPECT_EQ(parseHexColor("#ff8000"), orange);
    EXPECT_EQ(parseHexColor("  FF8000\n"), orange);
    EXPECT_EQ(parseHexColor("FFFF8000"), orange);
    EXPECT_EQ(parseHexColor("80FF8000"), (Color{1, 128 / 255.0, 0, 128 / 255.0}));
    EXPECT_EQ(parseHexColor("F80"), parseHexColor("FF8800"));
    const Color black{0, 0, 0, 1};
    EXPECT_EQ(parseHexColor("12345"), black);
    EXPECT_EQ(parseHexColor(""), black);
    EXPECT_EQ(parseHexColor("#"), black);
    EXPECT_EQ(parseHexColor("красны"), black);
    EXPECT_EQ(parseHexColor("FFxxxx"), (Color{0, 0, 1, 1}));  // only the leading digits count
}

TEST(Color, PrintsTruncatedAndNothingForNoColor) {
    EXPECT_EQ(hexText({1, 0.5, 0, 0.3}), "FF7F00");
    EXPECT_EQ(hexText({2, -1, 0.999, 1}), "FF00FE");
    EXPECT_EQ(hexText({std::nan(""), 0, 0, 1}), std::nullopt);
    EXPECT_EQ(hexText({0, std::numeric_limits<double>::infinity(), 0, 1}), std::nullopt);
    for (const auto* text : {"FF8000", "0000FF", "808080", "123456"})
        EXPECT_EQ(hexText(parseHexColor(text)), text);
}

TEST(Color, DarknessHasTwoMeasures) {
    EXPECT_TRUE(isDarkColor(parseHexColor("0000FF")));
    EXPECT_FALSE(isDarkColor(parseHexColor("FFFF00")));
    EXPECT_FALSE(isDarkColor({0.5, 0.5, 0.5, 1}));
    EXPECT_TRUE(isDarkHexColor("7F7F7F"));
    EXPECT_FALSE(isDarkHexColor("808080"));
    EXPECT_FALSE(isDarkHexColor("#000000"));
    EXPECT_FALSE(isDarkHexColor("000"));
}

TEST(TimeText, TruncatesAndWrapsAsEachFormSays) {
    EXPECT_EQ(formatTimeLong(3725.9), "01:02:05");
    EXPECT_EQ(formatTimeShort(3725.9), "62:05");
    EXPECT_EQ(formatTimeLong(0.999), "00:00:00");
    EXPECT_EQ(formatTimeLong(360000), "100:00:00");
    EXPECT_EQ(formatTimeShort(6000), "100:00");
}

TEST(Utf8Text, TrimsEveryKindOfBlank) {
    EXPECT_EQ(trimmed("\t \xC2\xA0\xE2\x80\xA8матч 1\xE3\x80\x80\r\n"), "матч 1");
    EXPECT_EQ(trimmed(" \n "), "");
    EXPECT_EQ(trimmed("\xFF x \xFF"), "\xFF x \xFF");
}

TEST(Utf8Text, ComparesAsAReaderWould) {
    EXPECT_TRUE(containsIgnoringCase("Финал СПАРТАК", "спартак"));
    EXPECT_TRUE(containsIgnoringCase("Cafe\xCC\x81", "CAF\xC3\x89"));  // composed and not
    EXPECT_TRUE(containsIgnoringCase("Straße", "STRASSE"));
    EXPECT_TRUE(containsIgnoringCase("anything", ""));
    EXPECT_FALSE(containsIgnoringCase("Финал", "финалы"));
    EXPECT_EQ(upperCased("ёж é1"), "ЁЖ É1");
    EXPECT_EQ(lowerCased("ЁЖ"), "ёж");
    EXPECT_EQ(firstUpperCased("ёж ёж"), "Ёж ёж");
    EXPECT_EQ(firstUpperCased(""), "");
}

TEST(Utf8Text, IsCutToWhatCanBeShownBetweenCharacters) {
    EXPECT_EQ(shortened("матч ⚽"), "матч ⚽");
    for (const std::string first : {"", "a", "ab"}) {
        std::string name = first;
        while (name.size() < 1'000'000)
            name += "⚽";
        const auto cut = shortened(name);
        EXPECT_LE(cut.size(), 1010u);
        EXPECT_TRUE(isUtf8(cut));
        EXPECT_TRUE(cut.ends_with("⚽…"));
    }
}

TEST(Utf8Text, ReplacesBytesThatAreNoText) {
    EXPECT_EQ(sanitizedUtf8("a\xFF\xC3z"), "a\xEF\xBF\xBD\xEF\xBF\xBDz");
    EXPECT_EQ(sanitizedUtf8("\xED\xA0\x80"), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");  // surrogate
    EXPECT_EQ(sanitizedUtf8("матч ⚽"), "матч ⚽");
    EXPECT_FALSE(isUtf8("abc\xF0\x9F\x98"));
    EXPECT_EQ(replaced("a b  c", " ", "__"), "a__b____c");
    EXPECT_EQ(replaced("aaa", "", "x"), "aaa");
}

}  // namespace
}  // namespace tembrix
