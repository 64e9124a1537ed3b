// SPDX-License-Identifier: GPL-3.0-or-later
// The rectangle shown over the chart while the user drags a zoom: a half-transparent window,
// or only its frame, with the values of two corners. It never takes mouse or keyboard input,
// so the chart below keeps the gesture and the Esc key.
#pragma once

#include <QWidget>

class QLabel;

class frm_Transparent : public QWidget
{
    Q_OBJECT

public:
    // Window opacity of the translucent form, out of 255.
    static constexpr int Alpha = 150;
    // Width of the white frame of the frame-only form.
    static constexpr int FrameWidth = 2;

    explicit frm_Transparent(QWidget* parent = nullptr);
    ~frm_Transparent() override;

    // Translucent: the whole rectangle is drawn half transparent; when the platform cannot
    // do that, or without Translucent, only the frame and the labels are shown. OnTop keeps
    // the window above all others. Shows the window without activating it.
    void ShowMe(bool translucent, bool onTop);
    // lbl_XY1 (top left) shows x1 over y1, lbl_XY2 (bottom right) x2 over y2; each label is
    // sized to its text.
    void SetLabels(const QString& x1, const QString& y1, const QString& x2, const QString& y2);
    // True after ShowMe when the half-transparent form is in use.
    bool Translucent() const { return m_bTranslucent; }

    QLabel* lbl_XY1() const { return m_cXY1; }
    QLabel* lbl_XY2() const { return m_cXY2; }
    QWidget* pic_Border() const { return m_cBorder; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void Arrange();

    QWidget* m_cBorder;
    QLabel* m_cXY1;
    QLabel* m_cXY2;
    bool m_bTranslucent = false;
};
