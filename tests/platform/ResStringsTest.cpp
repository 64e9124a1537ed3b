// SPDX-License-Identifier: GPL-3.0-or-later
#include "Globals.h"
#include "ResStrings.h"

#include <QRegularExpression>
#include <QStringList>

#include <limits>
#include <utility>

#include <gtest/gtest.h>

namespace {

constexpr int kFirstId = 200;
constexpr int kLastId = 499;
constexpr int kEnglish = 1000;

// Every test may change the language; the next one starts from German again.
struct ResStrings : ::testing::Test
{
    const qint32 savedOffset = std::exchange(g_lLangOffset, 0);
    ~ResStrings() override { g_lLangOffset = savedOffset; }
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

TEST_F(ResStrings, HoldsTwoCompleteBlocksOfTrimmedTextsAndTranslatedTwinsOfTheSameShape)
{
    int differing = 0;
    for (int id = kFirstId; id <= kLastId; ++id) {
        const QString german = ResStringRaw(id), english = ResStringRaw(id + kEnglish);
        for (const QString& text : {german, english})
            EXPECT_TRUE(!text.trimmed().isEmpty() && text == text.trimmed() && !text.contains(u'\\'))
                << "id " << id << ": '" << text.toStdString() << "'";
        differing += german != english ? 1 : 0;
        EXPECT_EQ(german.count(u'\n'), english.count(u'\n')) << "id " << id;
        EXPECT_EQ(Placeholders(german), Placeholders(english)) << "id " << id;
        // One access key where the German text has one, before a letter or digit.
        const qsizetype key = english.indexOf(u'&');
        EXPECT_EQ(english.count(u'&'), german.contains(u'&') ? 1 : 0) << "id " << id + kEnglish;
        EXPECT_TRUE(key < 0 || (key + 1 < english.size() && english[key + 1].isLetterOrNumber()))
            << "id " << id + kEnglish << ": " << english.toStdString();
    }
    for (int id : {kFirstId - 1, kLastId + 1, kFirstId - 1 + kEnglish, kLastId + 1 + kEnglish})
        EXPECT_TRUE(ResStringRaw(id).isNull()) << "id " << id;
    EXPECT_EQ(ResStringCount(), 2 * (kLastId - kFirstId + 1));
    // A block copied over without translation would pass the shape checks above.
    EXPECT_GT(differing, (kLastId - kFirstId + 1) * 3 / 4);
}

TEST_F(ResStrings, OffsetChoosesTheLanguageAndAMissingTextShowsItsId)
{
    constexpr qint32 kLowest = std::numeric_limits<qint32>::min();
    const struct { qint32 offset; int id; const char16_t* text; } cases[] = {{0, 204, u"&Datei"},
        {kEnglish, 204, u"&File"},
        // Ids outside the table and offsets past it show the id, also where a 32-bit sum would wrap to 1204.
        {0, 199, u"199"}, {kEnglish, 500, u"500"}, {5000, 493, u"493"},
        {std::numeric_limits<qint32>::max(), 204, u"204"}, {kLowest + 1204, kLowest, u"-2147483648"}};
    for (const auto& c : cases) {
        g_lLangOffset = c.offset;
        EXPECT_EQ(GetResString(c.id), QString::fromUtf16(c.text)) << "id " << c.id << " at offset " << c.offset;
    }
}
