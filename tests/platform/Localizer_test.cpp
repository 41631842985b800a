// The host's localiser, the wide/narrow text conversions and the number text.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "Ordo/MakeStdString.h"
#include "plinth/WideString.h"
#include "plinth/config/Localizer.h"
#include "plinth/utility/NumberToString.h"

namespace {

plinth::WideString wide(const char16_t* text) { return plinth::WideString(text); }

plinth::WideString localize(const char* key) {
    plinth::WideString out = wide(u"stale");
    plinth::config::Localizer::Get().Localize(out, key);
    return out;
}

// Every test here leaves the localiser without translations, so that the
// other suites of the program see the English defaults.
class PlatformLocalizer : public ::testing::Test {
protected:
    void SetUp() override { plinth::config::Localizer::Get().ClearTranslations(); }
    void TearDown() override { plinth::config::Localizer::Get().ClearTranslations(); }
};

TEST_F(PlatformLocalizer, OneLocaliserPerProcess) {
    EXPECT_EQ(&plinth::config::Localizer::Get(), &plinth::config::Localizer::Get());
    EXPECT_STREQ(plinth::config::Localizer::Get().Language(), "en");
}

TEST_F(PlatformLocalizer, DefaultIsTheTextAfterTheFirstEquals) {
    EXPECT_EQ(localize("$$$/Korvex/AudioFilters/Volume=Volume"), wide(u"Volume"));
    EXPECT_EQ(localize("$$$/Korvex/AudioFilters/Percent=%"), wide(u"%"));
    EXPECT_EQ(localize("a=b=c"), wide(u"b=c"));
    EXPECT_EQ(localize("path=  two blanks  "), wide(u"  two blanks  "));
    EXPECT_EQ(localize("path="), wide(u""));
    EXPECT_EQ(localize("=leading"), wide(u"leading"));
}

TEST_F(PlatformLocalizer, KeyWithoutEqualsIsItsOwnText) {
    EXPECT_EQ(localize("$$$/Korvex/AudioFilters/NoDefault"), wide(u"$$$/Korvex/AudioFilters/NoDefault"));
    EXPECT_EQ(localize(""), wide(u""));
    EXPECT_EQ(localize(nullptr), wide(u""));
}

TEST_F(PlatformLocalizer, UtfEightDefaultsBecomeUtfSixteen) {
    EXPECT_EQ(localize("path=Lautst\xC3\xA4rke"), wide(u"Lautst\u00E4rke"));
}

TEST_F(PlatformLocalizer, InstalledTranslationWins) {
    auto& localizer = plinth::config::Localizer::Get();
    const char* key = "$$$/Korvex/AudioFilters/Volume=Volume";
    localizer.SetTranslation(key, wide(u"Lautst\u00E4rke"));
    EXPECT_EQ(localize(key), wide(u"Lautst\u00E4rke"));
    // Other keys keep their defaults, even one with the same English text.
    EXPECT_EQ(localize("$$$/Korvex/AudioFilters/Other=Volume"), wide(u"Volume"));
    // Replacing a translation.
    localizer.SetTranslation(key, wide(u"Volumen"));
    EXPECT_EQ(localize(key), wide(u"Volumen"));
    localizer.ClearTranslations();
    EXPECT_EQ(localize(key), wide(u"Volume"));
}

TEST_F(PlatformLocalizer, TranslationOfTheEmptyKey) {
    auto& localizer = plinth::config::Localizer::Get();
    localizer.SetTranslation(nullptr, wide(u"empty"));
    EXPECT_EQ(localize(""), wide(u"empty"));
    EXPECT_EQ(localize(nullptr), wide(u"empty"));
}

// ---------------------------------------------------------------------------
// UTF-16 to UTF-8 and back

TEST(PlatformText, NarrowOfAscii) {
    EXPECT_EQ(Ordo::MakeStdString(wide(u"Volume")), "Volume");
    EXPECT_EQ(Ordo::MakeStdString(wide(u"")), "");
}

TEST(PlatformText, NarrowOfNonAscii) {
    // U+00E4 is two bytes: 110 00011, 10 100100.
    EXPECT_EQ(Ordo::MakeStdString(wide(u"Lautst\u00E4rke")), "Lautst\xC3\xA4rke");
    // U+20AC (euro) is three bytes: E2 82 AC.
    EXPECT_EQ(Ordo::MakeStdString(wide(u"\u20AC")), "\xE2\x82\xAC");
    // U+1F3B5 is the surrogate pair D83C DFB5 and four bytes F0 9F 8E B5.
    const char16_t pair[] = {0xD83C, 0xDFB5, 0};
    EXPECT_EQ(Ordo::MakeStdString(wide(pair)), "\xF0\x9F\x8E\xB5");
}

TEST(PlatformText, UnpairedSurrogatesBecomeReplacementCharacters) {
    // U+FFFD is EF BF BD.
    const char16_t lonelyHigh[] = {u'a', 0xD800, u'b', 0};
    EXPECT_EQ(Ordo::MakeStdString(wide(lonelyHigh)), "a\xEF\xBF\xBD" "b");
    const char16_t lonelyLow[] = {u'a', 0xDC00, 0};
    EXPECT_EQ(Ordo::MakeStdString(wide(lonelyLow)), "a\xEF\xBF\xBD");
    const char16_t highAtEnd[] = {u'a', 0xDBFF, 0};
    EXPECT_EQ(Ordo::MakeStdString(wide(highAtEnd)), "a\xEF\xBF\xBD");
    // Low then high is not a pair: two replacements.
    const char16_t reversed[] = {0xDC00, 0xD800, 0};
    EXPECT_EQ(Ordo::MakeStdString(wide(reversed)), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(PlatformText, WideOfUtfEight) {
    EXPECT_EQ(Ordo::MakeWideString("Lautst\xC3\xA4rke"), wide(u"Lautst\u00E4rke"));
    EXPECT_EQ(Ordo::MakeWideString("\xE2\x82\xAC"), wide(u"\u20AC"));
    const char16_t pair[] = {0xD83C, 0xDFB5, 0};
    EXPECT_EQ(Ordo::MakeWideString("\xF0\x9F\x8E\xB5"), wide(pair));
    EXPECT_EQ(Ordo::MakeWideString(""), wide(u""));
}

TEST(PlatformText, InvalidBytesBecomeReplacementCharacters) {
    EXPECT_EQ(Ordo::MakeWideString("a\xFF" "b"), wide(u"a\uFFFDb"));
    // A lead byte cut off at the end.
    EXPECT_EQ(Ordo::MakeWideString("a\xC3"), wide(u"a\uFFFD"));
    // A continuation byte without a lead.
    EXPECT_EQ(Ordo::MakeWideString("\x80" "a"), wide(u"\uFFFDa"));
}

TEST(PlatformText, RoundTrip) {
    const char16_t mixed[] = {u'L', 0x00E4, 0x20AC, 0xD83C, 0xDFB5, u'!', 0};
    EXPECT_EQ(Ordo::MakeWideString(Ordo::MakeStdString(wide(mixed))), wide(mixed));
}

// ---------------------------------------------------------------------------
// Number text

TEST(PlatformText, NumberToString) {
    using plinth::utility::NumberToString;
    EXPECT_EQ(NumberToString(0), wide(u"0"));
    EXPECT_EQ(NumberToString(16), wide(u"16"));
    EXPECT_EQ(NumberToString(-5), wide(u"-5"));
    EXPECT_EQ(NumberToString(1000000), wide(u"1000000"));
    EXPECT_EQ(NumberToString(std::numeric_limits<std::int64_t>::max()), wide(u"9223372036854775807"));
    EXPECT_EQ(NumberToString(std::numeric_limits<std::int64_t>::min()), wide(u"-9223372036854775808"));
}

}  // namespace
