// SPDX-License-Identifier: GPL-3.0-or-later
// The toolkit's own texts follow the program's language, read from the installed translations.
#include "QtTranslations.h"

#include "LogCapture.h"
#include "TempSettings.h"

#include <QColorDialog>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QFile>
#include <QPushButton>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class QtTranslationsTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QFile::exists(QtTranslations::DefaultFolder() + "/qtbase_de.qm"))
            << "the package qt6-translations-l10n is missing (scripts/install-deps.sh installs it)";
    }
    // Every test leaves the toolkit in English, as the other tests of the process expect it.
    void TearDown() override { QtTranslations::Install(false); }

    // The texts a button box of the toolkit gives its standard buttons.
    static QStringList ButtonTexts()
    {
        QDialogButtonBox box(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Yes
            | QDialogButtonBox::No | QDialogButtonBox::Close);
        QStringList texts;
        for (const auto which :
            { QDialogButtonBox::Cancel, QDialogButtonBox::Yes, QDialogButtonBox::No, QDialogButtonBox::Close })
            texts << box.button(which)->text();
        return texts;
    }

    TempSettings roots;
};

const QStringList English { "Cancel", "&Yes", "&No", "Close" };

TEST_F(QtTranslationsTest, GermanTranslatesTheToolkitsDialogsAndEnglishTakesTheTranslationOffAgain)
{
    LogCapture log(roots);
    ASSERT_EQ(ButtonTexts(), English);

    ASSERT_TRUE(QtTranslations::Install(true));
    EXPECT_EQ(ButtonTexts(), QStringList({ "Abbrechen", "&Ja", "&Nein", "Schließen" }));
    // The dialogs themselves: the colour dialog's labels and the file dialog's texts.
    {
        QColorDialog colors;
        QStringList buttons;
        for (const QPushButton* button : colors.findChildren<QPushButton*>())
            buttons << button->text();
        EXPECT_TRUE(buttons.contains("Abbrechen")) << buttons.join('|').toStdString();
        EXPECT_TRUE(buttons.contains("Zu benutzerdefinierten Farben &hinzufügen")) << buttons.join('|').toStdString();
    }
    EXPECT_EQ(QCoreApplication::translate("QFileDialog", "File &name:"), "Datei&name:");
    // Installing twice keeps one translator: taking it off once brings the English texts back.
    ASSERT_TRUE(QtTranslations::Install(true));
    ASSERT_TRUE(QtTranslations::Install(false));
    EXPECT_EQ(ButtonTexts(), English);
    EXPECT_EQ(QCoreApplication::translate("QFileDialog", "File &name:"), "File &name:");
    EXPECT_EQ(log.From("Sub Main"), QStringList()) << log.Dump();
}

TEST_F(QtTranslationsTest, AMissingTranslationIsLoggedOnceAndLeavesTheEnglishTexts)
{
    LogCapture log(roots);
    QTemporaryDir empty;
    ASSERT_TRUE(QtTranslations::Install(true));
    // A failed load takes the earlier translation off too: no language is mixed with another.
    EXPECT_FALSE(QtTranslations::Install(true, empty.path()));
    EXPECT_EQ(ButtonTexts(), English);
    EXPECT_FALSE(QtTranslations::Install(true, empty.path() + "/missing"));
    const QStringList lines = log.From("Sub Main");
    ASSERT_EQ(lines.size(), 2) << log.Dump();
    EXPECT_TRUE(lines[0].startsWith("qt translation - ") && lines[0].contains(empty.path())) << lines[0].toStdString();
    // English needs no file: nothing to miss, nothing written.
    EXPECT_TRUE(QtTranslations::Install(false));
    EXPECT_EQ(log.From("Sub Main").size(), 2);
}

} // namespace
