// SPDX-License-Identifier: GPL-3.0-or-later
#include "Globals.h"
#include "ResStrings.h"

#include <QRegularExpression>
#include <QStringList>

#include <limits>

#include <gtest/gtest.h>

namespace {

constexpr int kFirstId = 200;
constexpr int kLastId = 492;
constexpr int kEnglish = 1000;
constexpr int kTextsPerLanguage = kLastId - kFirstId + 1;

// Every test may change the language; the next one starts from German again.
class ResStrings : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_savedOffset = g_lLangOffset;
        g_lLangOffset = 0;
    }
    void TearDown() override { g_lLangOffset = m_savedOffset; }

private:
    qint32 m_savedOffset = 0;
};

// The placeholders a caller fills in, sorted so two texts can be compared regardless of order.
QStringList Placeholders(const QString& text)
{
    static const QRegularExpression re(QStringLiteral("%s[12]?|%v|%l|@"));
    QStringList found;
    for (auto it = re.globalMatch(text); it.hasNext();)
        found << it.next().captured();
    found.sort();
    return found;
}

} // namespace

TEST_F(ResStrings, HoldsBothLanguagesWithContiguousIds)
{
    for (int id = kFirstId; id <= kLastId; ++id) {
        EXPECT_FALSE(ResStringRaw(id).isNull()) << "German id " << id;
        EXPECT_FALSE(ResStringRaw(id + kEnglish).isNull()) << "English id " << id + kEnglish;
    }
    EXPECT_TRUE(ResStringRaw(kFirstId - 1).isNull());
    EXPECT_TRUE(ResStringRaw(kLastId + 1).isNull());
    EXPECT_TRUE(ResStringRaw(kFirstId - 1 + kEnglish).isNull());
    EXPECT_TRUE(ResStringRaw(kLastId + 1 + kEnglish).isNull());
    EXPECT_EQ(ResStringCount(), 2 * kTextsPerLanguage);
}

TEST_F(ResStrings, NoTextIsEmptyOrPadded)
{
    for (int id = kFirstId; id <= kLastId; ++id) {
        for (int lang : {0, kEnglish}) {
            const QString text = ResStringRaw(id + lang);
            EXPECT_FALSE(text.trimmed().isEmpty()) << "id " << id + lang;
            EXPECT_EQ(text, text.trimmed()) << "id " << id + lang;
        }
    }
}

TEST_F(ResStrings, OffsetZeroGivesGermanTexts)
{
    EXPECT_EQ(GetResString(200), QStringLiteral("SoRaNo"));
    EXPECT_EQ(GetResString(204), QStringLiteral("&Datei"));
    EXPECT_EQ(GetResString(210), QStringLiteral("Speichern &unter ..."));
    EXPECT_EQ(GetResString(232), QStringLiteral("Z&oom zurück"));
    EXPECT_EQ(GetResString(208), QStringLiteral("S&chließen"));
    EXPECT_EQ(GetResString(369), QStringLiteral("FEHLT"));
    EXPECT_EQ(GetResString(390), QStringLiteral("2. Y-Achse (recht)"));
    EXPECT_EQ(GetResString(431), QStringLiteral("%v um %l"));
    EXPECT_EQ(GetResString(490), QStringLiteral("Wollen Sie das Profil '%s' wrklich löschen?"));
    EXPECT_EQ(GetResString(491), QStringLiteral("Version"));
}

TEST_F(ResStrings, EscapedLineBreakBecomesRealLineBreak)
{
    EXPECT_EQ(GetResString(488),
              QStringLiteral("Die angegebene Datei %s existiert bereits.\n"
                             "Soll die Datei überschrieben werden?"));
    EXPECT_EQ(GetResString(295).count(u'\n'), 2);
    EXPECT_FALSE(GetResString(295).contains(u'\\'));
    g_lLangOffset = kEnglish;
    EXPECT_EQ(GetResString(489).count(u'\n'), 2);
    EXPECT_FALSE(GetResString(489).contains(u'\\'));
}

TEST_F(ResStrings, EnglishOffsetGivesEnglishTwins)
{
    g_lLangOffset = kEnglish;
    EXPECT_EQ(GetResString(204), QStringLiteral("&File"));
    EXPECT_EQ(GetResString(210), QStringLiteral("Save &as ..."));
    EXPECT_EQ(GetResString(232), QStringLiteral("Z&oom out"));
    EXPECT_EQ(GetResString(369), QStringLiteral("MISS"));
    EXPECT_EQ(GetResString(382), QStringLiteral("View"));
    EXPECT_EQ(GetResString(431), QStringLiteral("%v at %l"));
    EXPECT_EQ(GetResString(200), QStringLiteral("SoRaNo"));
}

TEST_F(ResStrings, EnglishTwinDiffersFromGermanText)
{
    // A block copied over without translation would pass the shape checks below.
    int differing = 0;
    for (int id = kFirstId; id <= kLastId; ++id) {
        if (ResStringRaw(id) != ResStringRaw(id + kEnglish))
            ++differing;
    }
    EXPECT_GT(differing, kTextsPerLanguage * 3 / 4);
}

TEST_F(ResStrings, OffsetPastTheTableShowsIdAsNumber)
{
    g_lLangOffset = 5000;
    EXPECT_EQ(GetResString(204), QStringLiteral("204"));
    EXPECT_EQ(GetResString(492), QStringLiteral("492"));
    g_lLangOffset = std::numeric_limits<qint32>::max();
    EXPECT_EQ(GetResString(204), QStringLiteral("204"));
    g_lLangOffset = std::numeric_limits<qint32>::min();
    EXPECT_EQ(GetResString(204), QStringLiteral("204"));
}

TEST_F(ResStrings, MissingIdShowsItsNumber)
{
    EXPECT_EQ(GetResString(199), QStringLiteral("199"));
    EXPECT_EQ(GetResString(0), QStringLiteral("0"));
    EXPECT_EQ(GetResString(-7), QStringLiteral("-7"));
    g_lLangOffset = kEnglish;
    EXPECT_EQ(GetResString(493), QStringLiteral("493"));
}

TEST_F(ResStrings, EnglishTwinKeepsMenuAccessKey)
{
    for (int id = kFirstId; id <= kLastId; ++id) {
        const QString german = ResStringRaw(id);
        const QString english = ResStringRaw(id + kEnglish);
        const qsizetype expected = german.contains(u'&') ? 1 : 0;
        EXPECT_EQ(english.count(u'&'), expected) << "id " << id + kEnglish << ": "
                                                 << english.toStdString();
        const qsizetype at = english.indexOf(u'&');
        if (at >= 0) {
            ASSERT_LT(at + 1, english.size()) << "id " << id + kEnglish;
            EXPECT_TRUE(english[at + 1].isLetterOrNumber()) << "id " << id + kEnglish;
        }
    }
}

TEST_F(ResStrings, TwinsShareLineBreaksAndPlaceholders)
{
    for (int id = kFirstId; id <= kLastId; ++id) {
        const QString german = ResStringRaw(id);
        const QString english = ResStringRaw(id + kEnglish);
        EXPECT_EQ(german.count(u'\n'), english.count(u'\n')) << "id " << id;
        EXPECT_EQ(Placeholders(german), Placeholders(english)) << "id " << id;
    }
}

TEST_F(ResStrings, CallerPlaceholdersAreLeftInPlace)
{
    EXPECT_EQ(GetResString(260), QStringLiteral("Über @..."));
    EXPECT_EQ(GetResString(462), QStringLiteral("Seite %s1 von %s2"));
    EXPECT_EQ(Placeholders(GetResString(425)), QStringList{QStringLiteral("%s")});
}
