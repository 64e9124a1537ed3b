// SPDX-License-Identifier: GPL-3.0-or-later
// The print preview: page turning, zoom modes, the stored zoom, releasing the document, finding
// texts and what the page view draws.
#include "frm_Preview.h"

#include "QtPrinters.h"
#include "ReportDocument.h"
#include "ResStrings.h"
#include "Settings.h"
#include "TempSettings.h"

#include <QAbstractScrollArea>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QImage>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include <tuple>

namespace {

// Pages with a filled black rectangle from (2000, 3000) to (6000, 5000) twips on each.
std::shared_ptr<ReportDocument> Document(int pages)
{
    auto document = std::make_shared<ReportDocument>();
    document->SetTitle(QStringLiteral("Lastgang"));
    for (int i = 0; i < pages; ++i) {
        ReportPage& page = document->AddPage(false);
        page.SetFillStyle(1);
        page.SetPenColor(Qt::black);
        page.DrawRect(2000, 3000, 4000, 2000);
    }
    return document;
}

void Wheel(frm_Preview& preview, int delta)
{
    QWidget* viewport = preview.pic_Page()->viewport();
    const QPointF at(viewport->width() / 2.0, viewport->height() / 2.0);
    QWheelEvent event(at, viewport->mapToGlobal(at), QPoint(), QPoint(0, delta), Qt::NoButton, Qt::NoModifier,
        Qt::NoScrollPhase, false);
    QApplication::sendEvent(viewport, &event);
}

class PreviewTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_preview = std::make_unique<frm_Preview>();
        m_preview->resize(800, 900);
        m_preview->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(m_preview.get()));
    }
    QSize Viewport() const { return m_preview->pic_Page()->viewport()->size(); }
    // The scroll bars come and go after the event loop ran.
    void Zoom(int index)
    {
        m_preview->SetZoomIndex(index);
        QCoreApplication::processEvents();
    }

    TempSettings m_settings;
    std::unique_ptr<frm_Preview> m_preview;
};

TEST_F(PreviewTest, KeysButtonsAndTheWheelTurnPagesWithinTheDocument)
{
    frm_Preview& preview = *m_preview;
    preview.SetReport(Document(3));
    EXPECT_EQ(preview.windowTitle(), GetResString(468) + QStringLiteral(" - Lastgang"));
    EXPECT_EQ(preview.CurrentPage(), 0);
    EXPECT_FALSE(preview.tlb_Previous()->isEnabled());
    EXPECT_TRUE(preview.tlb_Next()->isEnabled());

    preview.tlb_Next()->trigger();
    preview.tlb_Next()->trigger();
    EXPECT_FALSE(preview.tlb_Next()->isEnabled());
    EXPECT_EQ(preview.txt_Page()->text(), GetResString(462).replace("%s1", "3").replace("%s2", "3"));
    preview.NextPage();
    EXPECT_EQ(preview.CurrentPage(), 2);
    preview.ShowPage(-4);
    EXPECT_EQ(preview.CurrentPage(), 0);

    const std::pair<Qt::Key, int> keys[]
        = { { Qt::Key_End, 2 }, { Qt::Key_PageUp, 1 }, { Qt::Key_Home, 0 }, { Qt::Key_PageDown, 1 } };
    for (const auto& [key, page] : keys) {
        QTest::keyClick(preview.pic_Page(), key);
        EXPECT_EQ(preview.CurrentPage(), page) << key;
    }
    preview.txt_Page()->setValue(3);
    EXPECT_EQ(preview.CurrentPage(), 2);

    // In page width the portrait page is taller than the window: the wheel scrolls first and
    // turns the page only at its end.
    preview.ShowPage(0);
    Zoom(frm_Preview::ZoomPageWidth);
    QScrollBar* bar = preview.pic_Page()->verticalScrollBar();
    ASSERT_GT(bar->maximum(), 0);
    Wheel(preview, -120);
    EXPECT_EQ(preview.CurrentPage(), 0);
    EXPECT_GT(bar->value(), 0);
    bar->setValue(bar->maximum());
    Wheel(preview, -120);
    EXPECT_EQ(preview.CurrentPage(), 1);
    EXPECT_EQ(bar->value(), 0);
    Wheel(preview, 120);
    EXPECT_EQ(preview.CurrentPage(), 0);
    EXPECT_EQ(bar->value(), bar->maximum());

    preview.SetReport(Document(2));
    EXPECT_EQ(preview.CurrentPage(), 0);
    preview.SetReport(Document(0));
    EXPECT_FALSE(preview.tlb_Next()->isEnabled());
    EXPECT_FALSE(preview.tlb_Print()->isEnabled());
}

TEST_F(PreviewTest, ZoomModesFitTheViewportAndDrawTheSheet)
{
    frm_Preview& preview = *m_preview;
    auto document = Document(2);
    // The second page carries content from 2 cm to 19 cm only.
    ReportPage& narrow = document->Page(1);
    narrow.DrawLine(1134, 1000, 10772, 1000);
    narrow.DrawRect(1134, 2000, 9638, 12000);
    preview.SetReport(document);
    QScrollBar* horizontal = preview.pic_Page()->horizontalScrollBar();
    QScrollBar* vertical = preview.pic_Page()->verticalScrollBar();

    Zoom(frm_Preview::ZoomPageWidth);
    QRect sheet = preview.SheetRect();
    EXPECT_EQ(horizontal->maximum(), 0);
    EXPECT_GT(vertical->maximum(), 0);
    EXPECT_GT(sheet.width(), Viewport().width() - 40);
    EXPECT_NEAR(preview.Scale() * A4ShortTwips, sheet.width(), 1.0);

    Zoom(frm_Preview::ZoomWholePage);
    sheet = preview.SheetRect();
    EXPECT_EQ(vertical->maximum(), 0);
    EXPECT_TRUE(QRect(QPoint(), Viewport()).contains(sheet));
    EXPECT_GT(sheet.height(), Viewport().height() - 40);
    EXPECT_NEAR(double(sheet.width()) / sheet.height(), double(A4ShortTwips) / A4LongTwips, 0.01);
    // The page is drawn on a white sheet on a grey ground.
    const QImage image = preview.pic_Page()->viewport()->grab().toImage();
    const auto gray = [&](double x, double y) {
        return qGray(
            image.pixel(qRound(sheet.left() + x * preview.Scale()), qRound(sheet.top() + y * preview.Scale())));
    };
    EXPECT_LT(gray(4000, 4000), 40); // inside the black rectangle
    EXPECT_GT(gray(1000, 4000), 245); // left of it
    EXPECT_GT(qGray(image.pixel(2, 2)), 60);
    EXPECT_LT(qGray(image.pixel(2, 2)), 200);

    // 100 %: 210 mm at the screen's resolution.
    Zoom(5);
    EXPECT_EQ(preview.cbo_Zoom()->currentText(), QStringLiteral("100 %"));
    EXPECT_NEAR(preview.SheetRect().width(), 210.0 / 25.4 * preview.pic_Page()->logicalDpiX(), 1.0);
    preview.ZoomIn();
    EXPECT_EQ(preview.cbo_Zoom()->currentText(), QStringLiteral("150 %"));
    Zoom(7);
    EXPECT_FALSE(preview.tlb_ZoomIn()->isEnabled());
    Zoom(3);
    EXPECT_FALSE(preview.tlb_ZoomOut()->isEnabled());

    // Content: the printed part fills the width, scrolled to its left edge.
    preview.ShowPage(1);
    Zoom(frm_Preview::ZoomContent);
    sheet = preview.SheetRect();
    const double scale = preview.Scale();
    const double left = sheet.left() + 1134 * scale;
    const double right = sheet.left() + 10772 * scale;
    EXPECT_GE(left, 0.0);
    EXPECT_LT(left, 30.0);
    EXPECT_LE(right, Viewport().width());
    EXPECT_GT(right, Viewport().width() - 30.0);
}

TEST_F(PreviewTest, ClosingReleasesTheDocumentAndStoresTheZoomForTheNextStart)
{
    m_settings.SetMachine(Settings::KeyMainWin, QStringLiteral("prevzoom"), QStringLiteral("2"));
    EXPECT_EQ(frm_Preview().cbo_Zoom()->currentIndex(), frm_Preview::ZoomWholePage);
    // A value past the list does not select a missing entry.
    m_settings.SetMachine(Settings::KeyMainWin, QStringLiteral("prevzoom"), QStringLiteral("42"));
    frm_Preview broken;
    EXPECT_GE(broken.cbo_Zoom()->currentIndex(), 0);
    EXPECT_EQ(broken.cbo_Zoom()->currentIndex(), broken.ZoomIndex());

    frm_Preview& preview = *m_preview;
    int help = 0;
    preview.SetHelpHandler([&help](int context) { help = context; });
    QTest::keyClick(preview.pic_Page(), Qt::Key_F1);
    EXPECT_EQ(help, frm_Preview::HelpContext);
    auto document = Document(2);
    const std::weak_ptr<ReportDocument> watch = document;
    preview.SetReport(std::move(document));
    preview.cbo_Zoom()->setCurrentIndex(6);
    emit preview.cbo_Zoom()->activated(6);
    QSignalSpy released(&preview, &frm_Preview::ReportReleased);
    preview.tlb_Close()->trigger();
    EXPECT_FALSE(preview.isVisible());
    EXPECT_EQ(released.count(), 1);
    EXPECT_TRUE(watch.expired());
    EXPECT_EQ(Settings::StoredValue(Settings::Id::PreviewZoom), QStringLiteral("6"));
    EXPECT_EQ(frm_Preview().ZoomIndex(), 6);
}

TEST_F(PreviewTest, FindWalksThroughTheTextsOfAllPages)
{
    frm_Preview& preview = *m_preview;
    // "nord" in four texts in varying case, one low on page 2; a line is no text.
    const QRectF first(1500, 2000, 6000, 400), low(1500, 14000, 6000, 400), second(1500, 15000, 6000, 400),
        third(1500, 6000, 6000, 400), sued(1500, 4000, 6000, 400);
    const std::tuple<int, QString, QRectF> texts[]
        = { { 0, "Kopf", QRectF(1500, 1000, 6000, 400) }, { 0, "Lastgang Nord", first }, { 1, "Zähler Süd", sued },
              { 1, "Nordost", low }, { 1, "Nordwest", second }, { 2, "NORD gesamt", third } };
    auto document = Document(3);
    document->Page(1).DrawLine(1500, 3000, 9000, 3000);
    for (const auto& [page, text, rect] : texts)
        document->Page(page).DrawText(text, rect.left(), rect.top(), rect.width(), rect.height());
    preview.SetReport(document);
    Zoom(frm_Preview::ZoomPageWidth);
    preview.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&preview));

    QLineEdit* box = preview.txt_Find();
    QTest::keyClick(&preview, Qt::Key_F, Qt::ControlModifier);
    ASSERT_TRUE(box->isVisible());
    EXPECT_TRUE(box->hasFocus());
    QTest::keyClicks(box, QStringLiteral("nord"));
    const auto expectHit = [&](qsizetype page, const QRectF& rect) {
        EXPECT_EQ(preview.CurrentPage(), page);
        EXPECT_EQ(preview.FindMark(), rect);
    };
    const auto step = [&](Qt::Key key, Qt::KeyboardModifiers modifiers, qsizetype page, const QRectF& rect) {
        QTest::keyClick(box, key, modifiers);
        expectHit(page, rect);
    };
    step(Qt::Key_Return, {}, 0, first);
    step(Qt::Key_F3, {}, 1, low);
    // Scrolled into sight; marked yellow in the text's empty part, white below.
    const QRect sheet = preview.SheetRect();
    const double scale = preview.Scale();
    EXPECT_TRUE(QRect(QPoint(), Viewport())
                    .contains(QPoint(qRound(sheet.left() + 1500 * scale), qRound(sheet.top() + low.bottom() * scale))));
    const QImage image = preview.pic_Page()->viewport()->grab().toImage();
    const QRgb marked = image.pixel(qRound(sheet.left() + 7000 * scale), qRound(sheet.top() + 14200 * scale));
    EXPECT_GT(qRed(marked), qBlue(marked) + 60);
    EXPECT_GT(qGreen(marked), qBlue(marked) + 60);
    EXPECT_GT(qGray(image.pixel(qRound(sheet.left() + 7000 * scale), qRound(sheet.top() + 14700 * scale))), 245);

    step(Qt::Key_Return, {}, 1, second);
    step(Qt::Key_Return, {}, 2, third);
    step(Qt::Key_Return, {}, 0, first);
    step(Qt::Key_Return, Qt::ShiftModifier, 2, third);
    step(Qt::Key_F3, Qt::ShiftModifier, 1, second);

    // The search starts on the page shown, not the last hit's.
    preview.ShowPage(2);
    box->clear();
    QTest::keyClicks(box, QStringLiteral("SÜD"));
    step(Qt::Key_Return, {}, 1, sued);
    EXPECT_TRUE(box->styleSheet().isEmpty());

    box->clear();
    QTest::keyClicks(box, QStringLiteral("Westen"));
    EXPECT_FALSE(preview.Find());
    expectHit(1, sued);
    EXPECT_FALSE(box->styleSheet().isEmpty());
    // Typing again takes the red away; Escape leaves the box, not the preview.
    QTest::keyClick(box, Qt::Key_Backspace);
    EXPECT_TRUE(box->styleSheet().isEmpty());
    QTest::keyClick(box, Qt::Key_Escape);
    EXPECT_TRUE(preview.isVisible());
    EXPECT_FALSE(box->isVisible());
    EXPECT_TRUE(preview.FindMark().isEmpty());

    box->setText(QStringLiteral("nord"));
    EXPECT_TRUE(preview.Find());
    preview.SetReport(document);
    expectHit(0, QRectF());
}

} // namespace
