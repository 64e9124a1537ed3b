// SPDX-License-Identifier: GPL-3.0-or-later
// The date and time entry of the view dialogs: typed text, a calendar and a list of times.
#include "DateEdit.h"

#include "Calendar.h"
#include "ResStrings.h"
#include "frm_Calendar.h"
#include "frm_List.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QPixmap>
#include <QToolButton>

#include <cmath>

namespace {

constexpr int IconSize = 12;

// A sheet with a darker top band and a grid of days; drawn, because the style has none.
QIcon CalendarIcon(const QColor& colour)
{
    QPixmap pixmap(IconSize, IconSize);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setPen(colour);
    painter.drawRect(1, 1, 10, 10);
    painter.fillRect(1, 1, 11, 3, colour);
    for (int y = 6; y <= 9; y += 3)
        for (int x = 3; x <= 9; x += 3)
            painter.drawPoint(x, y);
    return QIcon(pixmap);
}

// A clock face with hands at ten past two.
QIcon ClockIcon(const QColor& colour)
{
    QPixmap pixmap(IconSize, IconSize);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colour, 1.2));
    painter.drawEllipse(QRectF(1.0, 1.0, 10.0, 10.0));
    painter.drawLine(QPointF(6.0, 6.0), QPointF(6.0, 2.8));
    painter.drawLine(QPointF(6.0, 6.0), QPointF(8.6, 6.0));
    return QIcon(pixmap);
}

QDate ToDate(double value)
{
    const Calendar::DateParts p = Calendar::Split(value);
    return QDate(p.year, p.month, p.day);
}

double TimeOfDay(double value)
{
    const Calendar::DateParts p = Calendar::Split(value);
    return ((p.hour * 60.0 + p.minute) * 60.0 + p.second + p.millisecond / 1000.0) / DateEditRules::SecondsPerDay;
}

} // namespace

DateEdit::DateEdit(QWidget* parent)
    : QWidget(parent)
    , m_value(std::floor(Calendar::Now()))
{
    m_edit = new QLineEdit(this);
    m_calendarButton = new QToolButton(this);
    m_timeButton = new QToolButton(this);
    const QColor glyph = palette().color(QPalette::ButtonText);
    m_calendarButton->setIcon(CalendarIcon(glyph));
    m_calendarButton->setToolTip(GetResString(498));
    m_timeButton->setIcon(ClockIcon(glyph));
    m_timeButton->setToolTip(GetResString(499));
    // The buttons are for the mouse; the keyboard reaches both drop-downs from the text.
    for (QToolButton* button : { m_calendarButton, m_timeButton })
        button->setFocusPolicy(Qt::NoFocus);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    layout->addWidget(m_edit, 1);
    layout->addWidget(m_calendarButton);
    layout->addWidget(m_timeButton);
    setFocusProxy(m_edit);

    m_calendar = new frm_Calendar(this);
    m_times = new frm_List(this);

    m_edit->installEventFilter(this);
    connect(m_edit, &QLineEdit::editingFinished, this, &DateEdit::TakeText);
    connect(m_edit, &QLineEdit::textEdited, this,
        [this](const QString& text) { MarkValid(DateEditRules::Parse(text).has_value()); });
    connect(m_calendarButton, &QToolButton::clicked, this, &DateEdit::ShowCalendar);
    connect(m_timeButton, &QToolButton::clicked, this, &DateEdit::ShowTimeList);
    connect(m_calendar, &frm_Calendar::DatePicked, this, [this](QDate date) {
        Apply(m_rules.WithDate(m_value, date.year(), date.month(), date.day()));
        m_edit->setFocus(Qt::PopupFocusReason);
    });
    connect(m_times, &frm_List::TimePicked, this, [this](double fraction) {
        Apply(m_rules.WithTime(m_value, fraction));
        m_edit->setFocus(Qt::PopupFocusReason);
    });

    ShowValue();
}

void DateEdit::SetValue(double value)
{
    if (std::isfinite(value))
        Apply(value);
}

void DateEdit::SetSecondsShown(bool shown)
{
    if (shown == m_rules.SecondsShown())
        return;
    m_rules.SetSecondsShown(shown);
    m_timesStale = true;
    ShowValue();
}

void DateEdit::SetStepSeconds(int seconds)
{
    m_rules.SetStepSeconds(seconds);
    m_rules.SetSecondsShown(DateEditRules::NeedsSeconds(m_rules.StepSeconds()));
    m_timesStale = true;
    ShowValue();
}

void DateEdit::SetLimits(std::optional<double> lower, std::optional<double> upper)
{
    m_rules.SetLimits(lower, upper);
    Apply(m_value);
}

void DateEdit::ShowCalendar()
{
    TakeText();
    const QDate first = m_rules.Lower() ? ToDate(*m_rules.Lower()) : QDate(100, 1, 1);
    const QDate last = m_rules.Upper() ? ToDate(*m_rules.Upper()) : QDate(9999, 12, 31);
    m_calendar->SetRange(first, last);
    m_calendar->SetDate(ToDate(m_value));
    m_calendar->DropDownBelow(this);
}

DateEdit::~DateEdit()
{
    m_edit->removeEventFilter(this);
    m_edit->disconnect(this);
}

void DateEdit::ShowTimeList()
{
    TakeText();
    FillTimes();
    m_times->SetCurrent(TimeOfDay(m_value));
    m_times->DropDownBelow(this);
}

bool DateEdit::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_edit || event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    const auto* key = static_cast<QKeyEvent*>(event);
    const Qt::KeyboardModifiers modifiers = key->modifiers() & ~Qt::KeypadModifier;
    // Alt+Down drops the calendar down as a combo box does, Alt+Up the times of the day.
    if ((key->key() == Qt::Key_Down || key->key() == Qt::Key_Up) && modifiers == Qt::AltModifier) {
        if (key->key() == Qt::Key_Down)
            ShowCalendar();
        else
            ShowTimeList();
        return true;
    }
    const int cursor = m_edit->cursorPosition();
    if (modifiers != Qt::NoModifier || !m_rules.ValueForKey(m_value, key->key(), cursor))
        return false;
    // A typed date counts before it is stepped; a text that names none steps the last good value.
    TakeText();
    const std::optional<double> stepped = m_rules.ValueForKey(m_value, key->key(), cursor);
    Apply(*stepped);
    m_edit->setCursorPosition(cursor);
    return true;
}

bool DateEdit::TakeText()
{
    const QString text = m_edit->text();
    // The shown text stands for the value itself, which may hold more than it shows.
    if (text == m_rules.Format(m_value)) {
        MarkValid(true);
        return true;
    }
    const std::optional<double> parsed = DateEditRules::Parse(text);
    if (!parsed) {
        MarkValid(false);
        return false;
    }
    Apply(*parsed);
    return true;
}

void DateEdit::Apply(double value)
{
    const double clamped = m_rules.Clamp(value);
    const bool changed = Calendar::ToMilliseconds(clamped) != Calendar::ToMilliseconds(m_value);
    m_value = clamped;
    ShowValue();
    if (changed)
        emit ValueChanged(m_value);
}

void DateEdit::ShowValue()
{
    const QString text = m_rules.Format(m_value);
    if (m_edit->text() != text)
        m_edit->setText(text);
    MarkValid(true);
}

void DateEdit::MarkValid(bool valid)
{
    m_valid = valid;
    const QString sheet = valid ? QString() : QStringLiteral("QLineEdit { border: 1px solid red; }");
    if (m_edit->styleSheet() != sheet)
        m_edit->setStyleSheet(sheet);
    m_edit->setToolTip(valid ? QString() : GetResString(497).replace(QLatin1String("%s"), m_edit->text()));
}

void DateEdit::FillTimes()
{
    if (!m_timesStale)
        return;
    m_timesStale = false;
    const QList<double> fractions = DateEditRules::TimesOfDay(m_rules.StepSeconds());
    QStringList texts;
    texts.reserve(fractions.size());
    for (double fraction : fractions)
        texts.append(m_rules.FormatTime(fraction));
    m_times->SetTimes(fractions, texts);
}
