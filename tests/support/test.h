#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <gmock/gmock.h>

#include <concepts>
#include <ostream>

// What every test has without including it: GoogleTest, the literals, and how Qt's texts are shown where an
// expectation failed: as texts.
QT_BEGIN_NAMESPACE

inline void PrintTo(QStringView text, std::ostream* out)
{
    *out << '"' << text.toUtf8().constData() << '"';
}
inline void PrintTo(const QString& text, std::ostream* out)
{
    PrintTo(QStringView(text), out);
}
inline void PrintTo(const QByteArray& bytes, std::ostream* out)
{
    *out << '"' << bytes.toPercentEncoding(" !\"#$&'()*+,/:;<=>?@[\\]^`{|}\n").constData() << '"';
}
template <typename Text>
requires std::same_as<Text, QString> || std::same_as<Text, QStringView> || std::same_as<Text, QByteArray>
    std::ostream& operator<<(std::ostream& out, const Text& text)
{
    PrintTo(text, &out);
    return out;
}

QT_END_NAMESPACE

namespace quoril::test {

using namespace Qt::StringLiterals;

}
