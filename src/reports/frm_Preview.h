// SPDX-License-Identifier: GPL-3.0-or-later
// The print preview: one page of a report document at a time, with zoom, page turning,
// finding texts, printing and saving as PDF.
#pragma once

#include <QMainWindow>
#include <QRectF>

#include <functional>
#include <memory>

class QAbstractScrollArea;
class QAction;
class QComboBox;
class QLineEdit;
class QSpinBox;
class QToolBar;
class PreviewPageView;
class ReportDocument;

class frm_Preview : public QMainWindow
{
    Q_OBJECT
public:
    explicit frm_Preview(QWidget* parent = nullptr);
    ~frm_Preview() override;

    // Shows the document from its first page; the zoom stays as it is.
    void SetReport(std::shared_ptr<ReportDocument> document);
    std::shared_ptr<ReportDocument> Report() const { return m_pDocument; }
    // Called with the help context by F1.
    void SetHelpHandler(std::function<void(int)> help) { m_help = std::move(help); }

    // The page shown, from 0; ShowPage keeps the index within the document.
    qsizetype CurrentPage() const { return m_lPage; }
    void ShowPage(qsizetype index);
    void NextPage() { ShowPage(m_lPage + 1); }
    void PreviousPage() { ShowPage(m_lPage - 1); }

    // The zoom is an entry of the zoom list: the three fitting modes, then fixed percentages.
    enum ZoomEntry { ZoomContent = 0, ZoomPageWidth = 1, ZoomWholePage = 2 };
    int ZoomIndex() const { return m_iZoom; }
    void SetZoomIndex(int index);
    // To the next smaller or larger percentage of the list.
    void ZoomOut();
    void ZoomIn();

    // Finds the next page text that contains the text of the find box, ignoring case: after the
    // last hit on the page shown (from its start if the hit is elsewhere), then on the following
    // pages and round from the first page; backward with forward false. The hit's page is shown
    // with the text marked. Without a hit nothing moves, the box turns red and false comes back.
    bool Find(bool forward = true);
    // The marked hit on the page shown, in twips; empty without one.
    QRectF FindMark() const;

    // Screen pixels per twip, and where the sheet lies in the page view's viewport.
    double Scale() const;
    QRect SheetRect() const;

    QToolBar* tlb_Preview() const { return m_tlbPreview; }
    QAction* tlb_Print() const { return m_tlbPrint; }
    QAction* tlb_SavePdf() const { return m_tlbSavePdf; }
    QAction* tlb_Find() const { return m_tlbFind; }
    QLineEdit* txt_Find() const { return m_txtFind; }
    QAction* tlb_ZoomOut() const { return m_tlbZoomOut; }
    QAction* tlb_ZoomIn() const { return m_tlbZoomIn; }
    QAction* tlb_Previous() const { return m_tlbPrevious; }
    QAction* tlb_Next() const { return m_tlbNext; }
    QAction* tlb_Close() const { return m_tlbClose; }
    QComboBox* cbo_Zoom() const { return m_cboZoom; }
    QSpinBox* txt_Page() const { return m_txtPage; }
    QAbstractScrollArea* pic_Page() const;

    static constexpr int HelpContext = 1041;

signals:
    // The window closed and let go of its document.
    void ReportReleased();

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Print();
    void SavePdf();
    void ShowFind();
    void HideFind();
    void SetFindBoxVisible(bool visible);
    void FindFromKey(bool forward);
    void SetNotFound(bool notFound);
    void ApplyZoom();
    void UpdateTools();
    void UpdateZoomTools();
    double PercentAt(int index) const;

    std::shared_ptr<ReportDocument> m_pDocument;
    std::function<void(int)> m_help;
    qsizetype m_lPage = 0;
    int m_iZoom = ZoomPageWidth;
    // The last hit: page and operation index; -1 without one.
    qsizetype m_lHitPage = -1;
    qsizetype m_lHitOperation = -1;
    // The find text changed since the hit, so the hit itself is looked at again.
    bool m_bHitAgain = false;

    PreviewPageView* m_picPage = nullptr;
    QToolBar* m_tlbPreview = nullptr;
    QAction* m_tlbPrint = nullptr;
    QAction* m_tlbSavePdf = nullptr;
    QAction* m_tlbFind = nullptr;
    QAction* m_actFindBox = nullptr;
    QLineEdit* m_txtFind = nullptr;
    QAction* m_tlbZoomOut = nullptr;
    QAction* m_tlbZoomIn = nullptr;
    QAction* m_tlbPrevious = nullptr;
    QAction* m_tlbNext = nullptr;
    QAction* m_tlbClose = nullptr;
    QComboBox* m_cboZoom = nullptr;
    QSpinBox* m_txtPage = nullptr;
};
