// SPDX-License-Identifier: GPL-3.0-or-later
// The narrow bar beside a chart, one per Y axis: buttons that widen, narrow and shift the axis
// range while held, one that fits the range to the data, and a pin that folds the bar away.
// The bar knows nothing of the axis; it raises events and the view does the arithmetic.
#pragma once

#include <QRect>
#include <QWidget>

#include <array>

class QTimer;
class QToolButton;

class ctl_VertNavBar : public QWidget
{
    Q_OBJECT
public:
    explicit ctl_VertNavBar(QWidget* parent = nullptr);

    // True while the bar is folded down to its pin. Setting it acts as a click on that pin.
    bool Minimized() const;
    void SetMinimized(bool minimized);

    // What a held button raises.
    struct MoveArgs
    {
        bool upper = false;
        bool lower = false;
        int direction = 0;
    };
    static MoveArgs ButtonMove(int index);
    static QString ButtonToolTip(int index);

    // Child positions for a bar size: the pin at the top, below it the upper group (buttons
    // 0 to 2), the fit button in the middle and the lower group (3 to 5) at the bottom.
    struct Layout
    {
        QRect pin;
        bool buttonsVisible = false;
        std::array<QRect, 6> buttons {};
        QRect adjust;
    };
    static Layout ComputeLayout(int width, int height, QSize pinSize, QSize buttonSize);

    QToolButton* Button(int index) const { return m_buttons.at(static_cast<std::size_t>(index)); }
    QToolButton* Pin(int index) const { return m_pins.at(static_cast<std::size_t>(index)); }
    QToolButton* AdjustButton() const { return m_adjust; }
    // The held button, -1 when none is.
    int PressedButton() const { return m_pressed; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void Move(bool upper, bool lower, int direction);
    void Adjust();
    void UpdateSize();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void ButtonPressed(int index);
    void ButtonReleased();
    void TimerStep();
    void PinClicked(int index);
    void ApplyLayout();
    void UpdateIcons();

    std::array<QToolButton*, 2> m_pins {};
    std::array<QToolButton*, 6> m_buttons {};
    QToolButton* m_adjust = nullptr;
    QTimer* m_timer = nullptr;
    int m_pressed = -1;
    bool m_buttonsShown = false;
};
