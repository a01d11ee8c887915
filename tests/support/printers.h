#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <gtest/gtest.h>

#include <ostream>

/// How a failed expectation shows Qt's texts: as texts. Every test has this header, without including it.
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

QT_END_NAMESPACE
