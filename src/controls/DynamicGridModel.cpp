// SPDX-License-Identifier: GPL-3.0-or-later
#include "DynamicGridModel.h"

#include "Calendar.h"
#include "Numeric.h"
#include "ResStrings.h"

#include <QIODevice>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <vector>

namespace {

constexpr qsizetype MaxRows = std::numeric_limits<qint32>::max();
// The CSV text is built in one buffer of this size and written whenever it is nearly full.
constexpr qsizetype CsvChunk = 1 << 20;

qint32 RowsOf(const DataMatrixPtr& matrix)
{
    const MatrixBlockPtr& block = matrix ? matrix->DataBlock() : MatrixBlockPtr();
    return block ? static_cast<qint32>(std::min(block->Rows(), MaxRows)) : 0;
}

// The value of a data row, nothing when the block has no such row.
std::optional<double> RawValue(const DataMatrix& matrix, qsizetype row)
{
    const MatrixBlockPtr& block = matrix.DataBlock();
    if (!block || row >= block->Rows() || block->Columns() < 2)
        return std::nullopt;
    return block->At(row, 1);
}

// --- CSV numbers and times, written straight into a char buffer

constexpr char DigitPairs[] = "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
                              "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
                              "8081828384858687888990919293949596979899";

constexpr std::uint64_t Pow10[]
    = { 1ULL, 10ULL, 100ULL, 1000ULL, 10000ULL, 100000ULL, 1000000ULL, 10000000ULL, 100000000ULL, 1000000000ULL,
          10000000000ULL, 100000000000ULL, 1000000000000ULL, 10000000000000ULL, 100000000000000ULL, 1000000000000000ULL,
          10000000000000000ULL, 100000000000000000ULL, 1000000000000000000ULL, 10000000000000000000ULL };
constexpr int SignificantDigits = 15;
constexpr std::uint64_t Lowest15 = Pow10[SignificantDigits - 1]; // the smallest 15-digit number
constexpr std::uint64_t Beyond15 = Pow10[SignificantDigits];

// Fifteen significant digits of a value, as an integer in [1e14, 1e15): value ~ digits * 10^(exponent - 14).
struct Digits15
{
    std::uint64_t digits = 0;
    int exponent = 0;
};

__extension__ typedef unsigned __int128 Wide; // GCC and Clang; exact products of 117 bits

// round(mantissa * 2^binaryExponent * 10^scale), ties to even, exactly in 128-bit integers;
// nothing when the numbers leave that room.
std::optional<std::uint64_t> ScaledExactly(std::uint64_t mantissa, int binaryExponent, int scale)
{
    if (scale > 19 || scale < -19)
        return std::nullopt;
    Wide quotient = 0;
    bool roundUp = false;
    if (scale >= 0 && binaryExponent < 0) {
        // The usual case, values below 1e15: a product and a shift, no division.
        const Wide numerator = Wide(mantissa) * Pow10[scale];
        const int shift = -binaryExponent;
        if (shift > 120)
            return std::nullopt;
        quotient = numerator >> shift;
        const Wide remainder = numerator - (quotient << shift);
        const Wide half = Wide(1) << (shift - 1);
        roundUp = remainder > half || (remainder == half && (quotient & 1));
    } else {
        // Values from 1e15 up: the power of ten divides. (A whole binary value below 1e15
        // never gets here; its estimate is left to the fallback.)
        if (scale >= 0)
            return std::nullopt;
        Wide numerator = mantissa;
        Wide divisor = Pow10[-scale];
        if (binaryExponent >= 0) {
            if (binaryExponent > 60)
                return std::nullopt;
            numerator <<= binaryExponent;
        } else {
            if (-binaryExponent > 60)
                return std::nullopt;
            divisor <<= -binaryExponent; // a few bits at most: the value is at least 1e15
        }
        quotient = numerator / divisor;
        const Wide remainder = numerator % divisor;
        roundUp = remainder * 2 > divisor || (remainder * 2 == divisor && (quotient & 1));
    }
    quotient += roundUp ? 1 : 0;
    if (quotient >> 64 != 0)
        return std::nullopt;
    return static_cast<std::uint64_t>(quotient);
}

constexpr double Pow10Double[] = { 1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
    1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22 }; // all exact in a double

// round(value * 10^scale) for a result below 1e15, where the product's own rounding error is at
// most 1/16: a result that is clearly not near a tie is the exact rounding. Nothing otherwise.
std::optional<std::uint64_t> ScaledQuickly(double value, int scale)
{
    if (scale < 0 || scale > 22)
        return std::nullopt;
    const double scaled = value * Pow10Double[scale];
    if (!(scaled < 0x1p50)) // beyond 1e15, or the error bound no longer holds
        return scaled < 0x1p52 ? std::optional<std::uint64_t>(Beyond15) : std::nullopt;
    const double nearest = (scaled + 0x1p52) - 0x1p52; // round to the nearest whole number
    if (std::fabs(scaled - nearest) > 0.4375)
        return std::nullopt;
    return static_cast<std::uint64_t>(nearest);
}

// Fifteen digits exactly as the library's printf-style conversion rounds them: a product in
// doubles where that is sure to be right, exact integers near a tie, the library itself for
// values beyond about 1e-5 to 1e34.
Digits15 RoundTo15(double value)
{
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const int biased = static_cast<int>(bits >> 52 & 0x7FF);
    if (biased != 0) {
        const std::uint64_t mantissa = (bits & ((std::uint64_t(1) << 52) - 1)) | std::uint64_t(1) << 52;
        const int binaryExponent = biased - 1075;
        // The binary exponent times log10(2), floored: the decimal exponent or one less. A
        // result of 1e15 means the exponent was one short, or the digits rounded up to it.
        int exponent = ((biased - 1023) * 78913) >> 18;
        for (int attempt = 0; attempt < 3; ++attempt, ++exponent) {
            const int scale = SignificantDigits - 1 - exponent;
            std::optional<std::uint64_t> digits = ScaledQuickly(value, scale);
            if (!digits)
                digits = ScaledExactly(mantissa, binaryExponent, scale);
            if (!digits || *digits < Lowest15)
                break;
            if (*digits < Beyond15)
                return { *digits, exponent };
        }
    }
    char text[32];
    const auto result
        = std::to_chars(text, text + sizeof text, value, std::chars_format::scientific, SignificantDigits - 1);
    // "d.dddddddddddddde+XX"
    Digits15 out;
    out.digits = static_cast<std::uint64_t>(text[0] - '0');
    for (int i = 2; i < SignificantDigits + 1; ++i)
        out.digits = out.digits * 10 + static_cast<std::uint64_t>(text[i] - '0');
    std::from_chars(text + SignificantDigits + 2 + (text[SignificantDigits + 2] == '+'), result.ptr, out.exponent);
    return out;
}

// The table's general form of a raw value with at most 15 significant digits and "." as the
// decimal point: fixed from 1E-04 up to fifteen integer digits, "1.5E+20" and "1E-07" beyond.
char* AppendNumber(char* out, double value)
{
    if (!std::isfinite(value)) {
        const char* text = std::isnan(value) ? "nan" : value < 0 ? "-inf" : "inf";
        const size_t length = std::strlen(text);
        std::memcpy(out, text, length);
        return out + length;
    }
    if (value == 0) {
        *out = '0';
        return out + 1;
    }
    if (value < 0) {
        *out++ = '-';
        value = -value;
    }
    const Digits15 d = RoundTo15(value);
    // The first seven digits and the last eight; readings with few decimals end in eight zeros.
    char digits[SignificantDigits];
    auto high = static_cast<std::uint32_t>(d.digits / 100000000);
    auto low = static_cast<std::uint32_t>(d.digits % 100000000);
    int count = 7;
    if (low != 0) {
        count = SignificantDigits;
        for (int i = SignificantDigits - 2; i >= 7; i -= 2) {
            std::memcpy(digits + i, DigitPairs + (low % 100) * 2, 2);
            low /= 100;
        }
    }
    for (int i = 5; i >= 1; i -= 2) {
        std::memcpy(digits + i, DigitPairs + (high % 100) * 2, 2);
        high /= 100;
    }
    digits[0] = static_cast<char>('0' + high);
    while (count > 1 && digits[count - 1] == '0')
        --count;

    const int exponent = d.exponent;
    if (exponent >= -4 && exponent < SignificantDigits) {
        if (exponent < 0) {
            *out++ = '0';
            *out++ = '.';
            for (int i = -1; i > exponent; --i)
                *out++ = '0';
            std::memcpy(out, digits, size_t(count));
            return out + count;
        }
        const int whole = exponent + 1;
        if (count <= whole) {
            std::memcpy(out, digits, size_t(count));
            std::memset(out + count, '0', size_t(whole - count));
            return out + whole;
        }
        std::memcpy(out, digits, size_t(whole));
        out += whole;
        *out++ = '.';
        std::memcpy(out, digits + whole, size_t(count - whole));
        return out + (count - whole);
    }
    *out++ = digits[0];
    if (count > 1) {
        *out++ = '.';
        std::memcpy(out, digits + 1, size_t(count - 1));
        out += count - 1;
    }
    *out++ = 'E';
    *out++ = exponent < 0 ? '-' : '+';
    const int magnitude = std::abs(exponent);
    if (magnitude >= 100)
        *out++ = static_cast<char>('0' + magnitude / 100);
    std::memcpy(out, DigitPairs + (magnitude % 100) * 2, 2);
    return out + 2;
}

char* AppendTwo(char* out, int value)
{
    std::memcpy(out, DigitPairs + value * 2, 2);
    return out + 2;
}

// "yyyy-mm-dd hh:mm:ss", the year with at least four digits; nothing for a date that is no number.
char* AppendTime(char* out, double date)
{
    if (!std::isfinite(date))
        return out;
    const Calendar::DateParts parts = Calendar::Split(date);
    int year = parts.year;
    if (year < 0) {
        *out++ = '-';
        year = -year;
    }
    if (year < 10000) {
        out = AppendTwo(out, year / 100);
        out = AppendTwo(out, year % 100);
    } else {
        out = std::to_chars(out, out + 16, year).ptr;
    }
    *out++ = '-';
    out = AppendTwo(out, parts.month);
    *out++ = '-';
    out = AppendTwo(out, parts.day);
    *out++ = ' ';
    out = AppendTwo(out, parts.hour);
    *out++ = ':';
    out = AppendTwo(out, parts.minute);
    *out++ = ':';
    return AppendTwo(out, parts.second);
}

// Room for the longest field: a sign, "0.0001" with 15 digits, or 15 digits with a point and
// "E+308"; a time: a year of up to eight digits.
constexpr qsizetype MaxNumberText = 24;
constexpr qsizetype MaxTimeText = 28;

} // namespace

DynamicGridModel::DynamicGridModel(QObject* parent)
    : QAbstractTableModel(parent)
    , m_sValueFormat(QStringLiteral("#,##0.00"))
    , m_sMissing(GetResString(369))
{
    m_headerFont.setBold(true);
}

int DynamicGridModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : WindowRows();
}

int DynamicGridModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() || m_matrices.isEmpty() ? 0 : static_cast<int>(m_matrices.size()) + 1;
}

QVariant DynamicGridModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    switch (role) {
    case Qt::DisplayRole: {
        const qint32 row = m_lFirstRow + index.row();
        return index.column() == 0 ? TimeText(row) : ValueText(row, index.column() - 1);
    }
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(Qt::AlignVCenter | (index.column() == 0 ? Qt::AlignLeft : Qt::AlignRight));
    default:
        return {};
    }
}

QVariant DynamicGridModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section > m_matrices.size())
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return section == 0 ? QString() : HeaderText(*m_matrices[section - 1]);
    case Qt::FontRole:
        return m_headerFont;
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(Qt::AlignVCenter | (section == 0 ? Qt::AlignLeft : Qt::AlignRight));
    default:
        return {};
    }
}

void DynamicGridModel::SetMatrices(const QList<DataMatrixPtr>& matrices)
{
    m_sMissing = GetResString(369); // the language may have changed since the last fill
    const qint32 rows = matrices.isEmpty() ? 0 : RowsOf(matrices.front());
    if (matrices == m_matrices && rows == m_lDataRows) {
        if (const int columns = columnCount(); columns > 0) {
            if (WindowRows() > 0)
                emit dataChanged(index(0, 0), index(WindowRows() - 1, columns - 1));
            emit headerDataChanged(Qt::Horizontal, 0, columns - 1);
        }
        return;
    }
    beginResetModel();
    m_matrices = matrices;
    m_lDataRows = rows;
    ClampFirstRow();
    endResetModel();
}

void DynamicGridModel::SetCapacity(qint32 rows)
{
    rows = std::max(rows, 1);
    if (rows == m_lCapacity)
        return;
    const qint32 before = WindowRows();
    const qint32 after = std::min(rows, m_lDataRows);
    if (after > before) {
        beginInsertRows(QModelIndex(), before, after - 1);
        m_lCapacity = rows;
        endInsertRows();
    } else if (after < before) {
        beginRemoveRows(QModelIndex(), after, before - 1);
        m_lCapacity = rows;
        endRemoveRows();
    } else {
        m_lCapacity = rows;
    }
    // A taller window at the end of the data starts further up.
    const qint32 first = m_lFirstRow;
    ClampFirstRow();
    if (first != m_lFirstRow && after > 0 && columnCount() > 0)
        emit dataChanged(index(0, 0), index(after - 1, columnCount() - 1));
}

void DynamicGridModel::SetFirstRow(qint32 row)
{
    const qint32 first = m_lFirstRow;
    m_lFirstRow = row;
    ClampFirstRow();
    if (first != m_lFirstRow && WindowRows() > 0 && columnCount() > 0)
        emit dataChanged(index(0, 0), index(WindowRows() - 1, columnCount() - 1), { Qt::DisplayRole });
}

void DynamicGridModel::ClampFirstRow()
{
    m_lFirstRow = std::clamp(m_lFirstRow, 0, std::max(MaxFirstRow(), 0));
}

void DynamicGridModel::SetFormats(const QString& dateFormat, const QString& valueFormat)
{
    m_sDateFormat = dateFormat;
    m_sValueFormat = valueFormat;
}

QString DynamicGridModel::TimeText(qint32 row) const
{
    if (m_matrices.isEmpty())
        return {};
    const MatrixBlockPtr& block = m_matrices.front()->DataBlock();
    if (!block || row < 0 || row >= block->Rows() || block->Columns() < 1)
        return {};
    return m_format.FormatDate(block->At(row, 0), m_sDateFormat);
}

QString DynamicGridModel::ValueText(qint32 row, qsizetype column) const
{
    if (column < 0 || column >= m_matrices.size() || row < 0)
        return {};
    const DataMatrix& matrix = *m_matrices[column];
    const std::optional<double> value = RawValue(matrix, row);
    if (!value || *value == matrix.DataBlock()->NoValue())
        return m_sMissing;
    // Cos phi is stored folded so that it sorts and sums; the grid shows the reading.
    const double shown = matrix.DataType() == DataMatrix::CosPhiType ? MeasuredCosPhi(*value) : *value;
    return m_format.FormatNumber(shown, m_sValueFormat);
}

QString DynamicGridModel::HeaderText(const DataMatrix& matrix)
{
    return matrix.Unit().isEmpty() ? matrix.ChannelName()
                                   : matrix.ChannelName() + QStringLiteral(" (") + matrix.Unit() + u')';
}

QString DynamicGridModel::DataText(
    const QList<DataMatrixPtr>& matrices, const QString& dateFormat, const QString& valueFormat) const
{
    if (matrices.isEmpty())
        return {};
    const MatrixBlockPtr first = matrices.front()->DataBlock();
    const qsizetype rows = first ? first->Rows() : 0;

    // The first line stays empty; the header line has no cell for the time column and
    // always shows the unit's brackets, so its titles sit one cell left of their values.
    QString text = QStringLiteral("\r\n");
    for (const DataMatrixPtr& matrix : matrices)
        text += matrix->ChannelName() + QStringLiteral(" (") + matrix->Unit() + QStringLiteral(")\t");
    text += QStringLiteral("\r\n");
    // Room for a usual measuring at once; a very long one grows the text as it goes.
    constexpr qsizetype MaxReserve = qsizetype(1) << 26;
    text.reserve(text.size() + std::min(rows * (24 + 16 * matrices.size()), MaxReserve));

    for (qsizetype row = 0; row < rows; ++row) {
        text += m_format.FormatDate(first->At(row, 0), dateFormat);
        text += u'\t';
        // A line ends at its first missing value; a row beyond a shorter matrix counts as one.
        // Values are the stored ones, cos phi unfolded.
        for (const DataMatrixPtr& matrix : matrices) {
            const std::optional<double> value = RawValue(*matrix, row);
            if (!value || *value == first->NoValue())
                break;
            text += m_format.FormatNumber(*value, valueFormat);
            text += u'\t';
        }
        text += QStringLiteral("\r\n");
    }
    return text;
}

bool DynamicGridModel::WriteCsv(QIODevice& device, const QList<DataMatrixPtr>& matrices) const
{
    QString header = QStringLiteral("\"Zeitstempel\"");
    for (const DataMatrixPtr& matrix : matrices)
        header += QStringLiteral(",\"") + HeaderText(*matrix) + u'"';
    header += QStringLiteral("\r\n");
    if (device.write(header.toUtf8()) < 0)
        return false;

    const MatrixBlockPtr first = matrices.isEmpty() ? MatrixBlockPtr() : matrices.front()->DataBlock();
    const qsizetype rows = first ? first->Rows() : 0;
    if (rows == 0)
        return true;
    // Each column as its raw values and their count; a column without values writes empty fields.
    struct Column
    {
        const double* values = nullptr;
        qsizetype rows = 0;
    };
    std::vector<Column> columns;
    columns.reserve(size_t(matrices.size()));
    for (const DataMatrixPtr& matrix : matrices) {
        const MatrixBlockPtr& block = matrix->DataBlock();
        if (block && block->Columns() >= 2)
            columns.push_back({ block->Column(1).data(), block->Rows() });
        else
            columns.push_back({});
    }
    const double* times = first->Columns() >= 1 ? first->Column(0).data() : nullptr;

    // Raw values, whatever the locale: a missing value is written as its number, a row beyond
    // a shorter matrix as an empty field. Lines are built in one buffer that is written in
    // large blocks, without an allocation per line or cell.
    const qsizetype lineMax = MaxTimeText + qsizetype(columns.size()) * (MaxNumberText + 1) + 2;
    std::vector<char> buffer(size_t(std::max(CsvChunk, 2 * lineMax)));
    char* const begin = buffer.data();
    char* const flushAt = begin + buffer.size() - lineMax;
    char* out = begin;
    for (qsizetype row = 0; row < rows; ++row) {
        if (times)
            out = AppendTime(out, times[row]);
        for (const Column& column : columns) {
            *out++ = ',';
            if (row < column.rows)
                out = AppendNumber(out, column.values[row]);
        }
        *out++ = '\r';
        *out++ = '\n';
        if (out >= flushAt) {
            if (device.write(begin, out - begin) != out - begin)
                return false;
            out = begin;
        }
    }
    return device.write(begin, out - begin) == out - begin;
}
