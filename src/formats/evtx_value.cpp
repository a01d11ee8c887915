#include "formats/evtx_value.h"

#include <QDateTime>
#include <QTimeZone>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <limits>
#include <type_traits>

namespace quoril::evtx {
namespace {

using namespace Qt::StringLiterals;

constexpr quint64 TicksPerSecond = 10'000'000;
constexpr quint64 UnixEpoch = 116'444'736'000'000'000;

template <typename T> T load(const char* bytes)
{
    return qFromLittleEndian<T>(bytes);
}

/// How many bytes a value of the type has; 0 where that varies.
qsizetype fixedSize(quint8 type)
{
    using namespace value_type;
    switch (type) {
    case Int8:
    case UInt8:
        return 1;
    case Int16:
    case UInt16:
        return 2;
    case Int32:
    case UInt32:
    case Float:
    case Bool:
    case HexInt32:
        return 4;
    case Int64:
    case UInt64:
    case Double:
    case FileTime:
    case HexInt64:
        return 8;
    case Guid:
    case SystemTime:
        return 16;
    default:
        return 0;
    }
}

void appendDecimal(quint64 number, bool negative, QString& out)
{
    std::array<char16_t, 21> digits;
    std::size_t at = digits.size();
    do {
        digits[--at] = char16_t(u'0' + number % 10);
        number /= 10;
    } while (number > 0);
    if (negative)
        digits[--at] = u'-';
    out.append(QStringView(digits.data() + at, qsizetype(digits.size() - at)));
}

void appendSigned(qint64 number, QString& out)
{
    appendDecimal(number < 0 ? 0 - quint64(number) : quint64(number), number < 0, out);
}

void appendHex(quint64 number, int width, QStringView digits, QString& out)
{
    int left = width;
    while (left < 16 && (number >> (left * 4)) != 0)
        ++left;
    while (left > 0)
        out.append(digits[(number >> (--left * 4)) & 0xF]);
}

constexpr QStringView LowerDigits = u"0123456789abcdef";
constexpr QStringView UpperDigits = u"0123456789ABCDEF";

void appendPadded(quint64 number, int width, QString& out)
{
    quint64 limit = 10;
    for (int i = 1; i < width; ++i, limit *= 10) {
        if (number < limit)
            out.append(u'0');
    }
    appendDecimal(number, false, out);
}

void appendTime(const QDateTime& time, quint64 fraction, int fractionDigits, QString& out)
{
    const QDate date = time.date();
    const QTime clock = time.time();
    appendPadded(quint64(std::max(date.year(), 0)), 4, out);
    for (const auto& [mark, number] :
        {std::pair(u'-', date.month()), std::pair(u'-', date.day()), std::pair(u'T', clock.hour()),
            std::pair(u':', clock.minute()), std::pair(u':', clock.second())}) {
        out.append(QChar(mark));
        appendPadded(quint64(std::max(number, 0)), 2, out);
    }
    out.append(u'.');
    appendPadded(fraction, fractionDigits, out);
    out.append(u'Z');
}

void appendFileTime(quint64 fileTime, QString& out)
{
    const qint64 seconds = qint64(fileTime / TicksPerSecond) - qint64(UnixEpoch / TicksPerSecond);
    appendTime(
        QDateTime::fromSecsSinceEpoch(seconds, QTimeZone::utc()), fileTime % TicksPerSecond * 100, 9, out);
}

QDateTime systemTime(const char* bytes)
{
    std::array<quint16, 8> parts;
    qFromLittleEndian<quint16>(bytes, qsizetype(parts.size()), parts.data());
    return QDateTime(
        QDate(parts[0], parts[1], parts[3]), QTime(parts[4], parts[5], parts[6], parts[7]), QTimeZone::utc());
}

void appendGuid(const char* bytes, QString& out)
{
    out.append(u'{');
    appendHex(load<quint32>(bytes), 8, UpperDigits, out);
    out.append(u'-');
    appendHex(load<quint16>(bytes + 4), 4, UpperDigits, out);
    out.append(u'-');
    appendHex(load<quint16>(bytes + 6), 4, UpperDigits, out);
    for (int i = 8; i < 16; ++i) {
        if (i == 8 || i == 10)
            out.append(u'-');
        appendHex(load<quint8>(bytes + i), 2, UpperDigits, out);
    }
    out.append(u'}');
}

/// How many bytes the security identifier at the front has; 0 if it is damaged.
qsizetype sidSize(QByteArrayView bytes)
{
    if (bytes.size() < 8)
        return 0;
    const qsizetype size = 8 + 4 * qsizetype(load<quint8>(bytes.data() + 1));
    return size <= bytes.size() ? size : 0;
}

void appendSid(QByteArrayView bytes, QString& out)
{
    const qsizetype size = sidSize(bytes);
    if (size == 0)
        return;
    out.append(u"S-"_s);
    appendDecimal(load<quint8>(bytes.data()), false, out);
    quint64 authority = 0;
    for (qsizetype i = 2; i < 8; ++i)
        authority = authority << 8 | load<quint8>(bytes.data() + i);
    out.append(u'-');
    appendDecimal(authority, false, out);
    for (qsizetype at = 8; at < size; at += 4) {
        out.append(u'-');
        appendDecimal(load<quint32>(bytes.data() + at), false, out);
    }
}

void appendUnits(QByteArrayView bytes, QString& out)
{
    qsizetype units = bytes.size() / 2;
    while (units > 0 && bytes[units * 2 - 1] == 0 && bytes[units * 2 - 2] == 0)
        --units;
    const qsizetype before = out.size();
    out.resize(before + units);
    if (units > 0)
        qFromLittleEndian<char16_t>(bytes.data(), units, out.data() + before);
}

/// Strings in an array end with a zero unit each; only the last may lack it.
bool takeStringItem(Value& array, Value& item, qsizetype unit)
{
    qsizetype end = 0;
    const auto isZero
        = [&](qsizetype at) { return array.bytes[at] == 0 && (unit == 1 || array.bytes[at + 1] == 0); };
    while (end + unit <= array.bytes.size() && !isZero(end))
        end += unit;
    item.bytes = array.bytes.first(std::min(end, array.bytes.size()));
    array.bytes = array.bytes.sliced(std::min(end + unit, array.bytes.size()));
    return true;
}

} // namespace

bool takeItem(Value& array, Value& item)
{
    item.type = array.type & quint8(~value_type::ArrayFlag);
    if (array.bytes.isEmpty())
        return false;
    if (item.type == value_type::String || item.type == value_type::AnsiString)
        return takeStringItem(array, item, item.type == value_type::String ? 2 : 1);
    qsizetype size = fixedSize(item.type);
    if (item.type == value_type::Sid)
        size = sidSize(array.bytes);
    if (size == 0 || size > array.bytes.size())
        size = array.bytes.size();
    item.bytes = array.bytes.first(size);
    array.bytes = array.bytes.sliced(size);
    return true;
}

void appendText(const Value& value, QString& out)
{
    using namespace value_type;
    const QByteArrayView bytes = value.bytes;
    if (bytes.size() < fixedSize(value.type))
        return;
    switch (value.type) {
    case String:
        return appendUnits(bytes, out);
    case AnsiString:
        out.append(
            QString::fromLatin1(bytes.first(qsizetype(qstrnlen(bytes.data(), std::size_t(bytes.size()))))));
        return;
    case Int8:
        return appendSigned(load<qint8>(bytes.data()), out);
    case Int16:
        return appendSigned(load<qint16>(bytes.data()), out);
    case Int32:
        return appendSigned(load<qint32>(bytes.data()), out);
    case Int64:
        return appendSigned(load<qint64>(bytes.data()), out);
    case UInt8:
    case UInt16:
    case UInt32:
    case UInt64:
        return appendDecimal(toNumber(value), false, out);
    case Float:
        out.append(QString::number(double(load<float>(bytes.data())), 'g', 6));
        return;
    case Double:
        out.append(QString::number(load<double>(bytes.data()), 'g', 15));
        return;
    case Bool:
        out.append(load<quint32>(bytes.data()) != 0 ? u"true"_s : u"false"_s);
        return;
    case Binary:
        for (const char byte : bytes)
            appendHex(quint8(byte), 2, UpperDigits, out);
        return;
    case Guid:
        return appendGuid(bytes.data(), out);
    case Size:
    case HexInt32:
    case HexInt64:
        out.append(u"0x"_s);
        return appendHex(toNumber(value), 1, LowerDigits, out);
    case FileTime:
        return appendFileTime(load<quint64>(bytes.data()), out);
    case SystemTime:
        return appendTime(systemTime(bytes.data()), load<quint16>(bytes.data() + 14), 3, out);
    case Sid:
        return appendSid(bytes, out);
    default:
        return;
    }
}

quint64 toNumber(const Value& value)
{
    using namespace value_type;
    const QByteArrayView bytes = value.bytes;
    switch (value.type) {
    case Int8:
    case UInt8:
    case Int16:
    case UInt16:
    case Int32:
    case UInt32:
    case Int64:
    case UInt64:
    case Size:
    case HexInt32:
    case HexInt64: {
        quint64 number = 0;
        for (qsizetype i = std::min<qsizetype>(bytes.size(), 8); i > 0; --i)
            number = number << 8 | quint8(bytes[i - 1]);
        return number;
    }
    case String: {
        QString text;
        appendUnits(bytes, text);
        return text.toULongLong(nullptr, 0);
    }
    default:
        return 0;
    }
}

qint64 secondsSinceEpoch(quint64 fileTime)
{
    const auto seconds = [](quint64 ticks) { return qint64(ticks / TicksPerSecond); };
    if (fileTime >= UnixEpoch)
        return seconds(fileTime - UnixEpoch);
    return -seconds(UnixEpoch - fileTime + TicksPerSecond - 1);
}

qint64 secondsSinceEpoch(const Value& value)
{
    const auto secondsOf = [](const QDateTime& time) { return time.isValid() ? time.toSecsSinceEpoch() : 0; };
    if (value.type == value_type::FileTime && value.bytes.size() >= 8)
        return secondsSinceEpoch(load<quint64>(value.bytes.data()));
    if (value.type == value_type::SystemTime && value.bytes.size() >= 16)
        return secondsOf(systemTime(value.bytes.data()));
    if (value.type != value_type::String)
        return 0;
    QString text;
    appendUnits(value.bytes, text);
    QDateTime time = QDateTime::fromString(text, Qt::ISODate);
    time.setTimeZone(QTimeZone::utc());
    return secondsOf(time);
}

quint32 heldSeconds(qint64 seconds)
{
    return quint32(std::clamp<qint64>(seconds, 0, std::numeric_limits<quint32>::max()));
}

} // namespace quoril::evtx
