#pragma once

#include <QByteArrayView>
#include <QString>

namespace quoril::evtx {

/// Type numbers of binary XML values.
namespace value_type {
inline constexpr quint8 Null = 0x00;
inline constexpr quint8 String = 0x01;
inline constexpr quint8 AnsiString = 0x02;
inline constexpr quint8 Int8 = 0x03;
inline constexpr quint8 UInt8 = 0x04;
inline constexpr quint8 Int16 = 0x05;
inline constexpr quint8 UInt16 = 0x06;
inline constexpr quint8 Int32 = 0x07;
inline constexpr quint8 UInt32 = 0x08;
inline constexpr quint8 Int64 = 0x09;
inline constexpr quint8 UInt64 = 0x0A;
inline constexpr quint8 Float = 0x0B;
inline constexpr quint8 Double = 0x0C;
inline constexpr quint8 Bool = 0x0D;
inline constexpr quint8 Binary = 0x0E;
inline constexpr quint8 Guid = 0x0F;
inline constexpr quint8 Size = 0x10;
inline constexpr quint8 FileTime = 0x11;
inline constexpr quint8 SystemTime = 0x12;
inline constexpr quint8 Sid = 0x13;
inline constexpr quint8 HexInt32 = 0x14;
inline constexpr quint8 HexInt64 = 0x15;
inline constexpr quint8 BinXml = 0x21;
inline constexpr quint8 ArrayFlag = 0x80;
} // namespace value_type

/// A value of binary XML in the chunk that holds it.
struct Value
{
    quint8 type = value_type::Null;
    QByteArrayView bytes;

    bool isArray() const { return (type & value_type::ArrayFlag) != 0; }
};

/// Takes the next item of the array `array` away from it; false at its end.
bool takeItem(Value& array, Value& item);

/// Appends the text of a value that is no array. A value whose bytes are too few for its type has none.
void appendText(const Value& value, QString& out);

/// The value as a number: integers as they are, texts as decimal or 0x digits; 0 for anything else.
quint64 toNumber(const Value& value);

/// A FILETIME in whole seconds since 1970-01-01 UTC; negative before that.
qint64 secondsSinceEpoch(quint64 fileTime);

/// The point in time of a FILETIME, SYSTEMTIME or text value, as above; 0 for anything else.
qint64 secondsSinceEpoch(const Value& value);

/// The seconds, held within what 32 bits hold.
quint32 heldSeconds(qint64 seconds);

} // namespace quoril::evtx
