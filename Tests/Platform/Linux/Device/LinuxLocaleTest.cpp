#include "Platform/Linux/Device/LinuxLocale.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace vorlane {
namespace {

using testing::ElementsAre;

std::vector<std::string> tagsWith(const std::map<std::string, std::string>& environment) {
    return preferredLanguageTags([&environment](const char* name) -> std::optional<std::string> {
        const auto found = environment.find(name);
        if (found == environment.end()) return std::nullopt;
        return found->second;
    });
}

TEST(LinuxLocaleTest, LocaleNameBecomesALanguageTag) {
    EXPECT_EQ(languageTagOfLocale("de_AT.UTF-8"), "de-AT");
    EXPECT_EQ(languageTagOfLocale("de_DE@euro"), "de-DE");
    EXPECT_EQ(languageTagOfLocale("fr"), "fr");
    EXPECT_EQ(languageTagOfLocale("fr.UTF-8"), "fr");
    EXPECT_EQ(languageTagOfLocale("es_419"), "es-419");
    EXPECT_EQ(languageTagOfLocale("EN_us"), "en-US");
    EXPECT_EQ(languageTagOfLocale("sr_RS@latin"), "sr-Latn-RS");
    EXPECT_EQ(languageTagOfLocale("uz_UZ.UTF-8@cyrillic"), "uz-Cyrl-UZ");
    EXPECT_EQ(languageTagOfLocale("ast_ES.UTF-8"), "ast-ES");
}

TEST(LinuxLocaleTest, PlainLocaleIsEnglish) {
    EXPECT_EQ(languageTagOfLocale("C"), "en");
    EXPECT_EQ(languageTagOfLocale("POSIX"), "en");
    EXPECT_EQ(languageTagOfLocale("C.UTF-8"), "en");
}

TEST(LinuxLocaleTest, LocaleWithoutALanguageHasNoTag) {
    for (const char* const name : {"", "_", "x", "1234", "de-AT", "/usr/share/locale", "\xff\xfe"}) {
        EXPECT_EQ(languageTagOfLocale(name), std::nullopt) << name;
    }
}

TEST(LinuxLocaleTest, InvalidRegionIsOmitted) { EXPECT_EQ(languageTagOfLocale("de_Austria"), "de"); }

TEST(LinuxLocaleTest, LanguageDefaultsToEnglish) {
    EXPECT_THAT(tagsWith({}), ElementsAre("en"));
    EXPECT_THAT(tagsWith({{"LANG", "!?"}}), ElementsAre("en"));
}

TEST(LinuxLocaleTest, MostSpecificVariableCounts) {
    EXPECT_THAT(tagsWith({{"LANG", "it_IT.UTF-8"}}), ElementsAre("it-IT"));
    EXPECT_THAT(tagsWith({{"LANG", "it_IT.UTF-8"}, {"LC_MESSAGES", "nl_NL"}}), ElementsAre("nl-NL"));
    EXPECT_THAT(tagsWith({{"LANG", "it_IT"}, {"LC_MESSAGES", "nl_NL"}, {"LC_ALL", "pt_BR"}}), ElementsAre("pt-BR"));
}

TEST(LinuxLocaleTest, LanguageListComesFirstWithoutDuplicates) {
    EXPECT_THAT(tagsWith({{"LANGUAGE", "de_AT:de::en_GB:"}, {"LANG", "de_DE.UTF-8"}}),
                ElementsAre("de-AT", "de", "en-GB", "de-DE"));
    EXPECT_THAT(tagsWith({{"LANGUAGE", "nb_NO:en"}, {"LANG", "nb_NO.UTF-8"}}), ElementsAre("nb-NO", "en"));
    EXPECT_THAT(tagsWith({{"LANGUAGE", "de"}}), ElementsAre("de"));
}

TEST(LinuxLocaleTest, PlainLocaleDisablesTheList) {
    EXPECT_THAT(tagsWith({{"LANGUAGE", "de"}, {"LC_ALL", "C"}}), ElementsAre("en"));
    EXPECT_THAT(tagsWith({{"LANGUAGE", "de"}, {"LANG", "POSIX"}}), ElementsAre("en"));
}

TEST(LinuxLocaleTest, VariableNamesTheZone) {
    EXPECT_EQ(timeZoneName("Europe/Oslo", "/usr/share/zoneinfo/Etc/UTC"), "Europe/Oslo");
    EXPECT_EQ(timeZoneName(":America/Argentina/Buenos_Aires", ""), "America/Argentina/Buenos_Aires");
    EXPECT_EQ(timeZoneName("UTC", ""), "UTC");
    EXPECT_EQ(timeZoneName("Etc/GMT+5", ""), "Etc/GMT+5");
    EXPECT_EQ(timeZoneName("/usr/share/zoneinfo/Asia/Tokyo", ""), "Asia/Tokyo");
}

TEST(LinuxLocaleTest, ZoneRuleHasNoName) {
    EXPECT_EQ(timeZoneName("CET-1CEST,M3.5.0,M10.5.0/3", "/usr/share/zoneinfo/Etc/UTC"), "");
    EXPECT_EQ(timeZoneName("<+0330>-3:30", ""), "");
    EXPECT_EQ(timeZoneName("UTC0", ""), "");
}

TEST(LinuxLocaleTest, LinkNamesTheZoneOtherwise) {
    EXPECT_EQ(timeZoneName(std::nullopt, "/usr/share/zoneinfo/Europe/Vienna"), "Europe/Vienna");
    EXPECT_EQ(timeZoneName(std::nullopt, "../usr/share/zoneinfo/posix/Europe/Vienna"), "Europe/Vienna");
    EXPECT_EQ(timeZoneName(std::nullopt, "/etc/somewhere"), "");
    EXPECT_EQ(timeZoneName(std::nullopt, ""), "");
}

}  // namespace
}  // namespace vorlane
