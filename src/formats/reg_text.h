#pragma once

#include "formats/error.h"
#include "formats/regf_key.h"

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <vector>

namespace quoril::regtext {

/// One step that a text in the registry editor's form (version 5.00) asks for, in the text's order.
struct Operation
{
    enum class Kind
    {
        CreateKey,
        DeleteKey,
        SetValue,
        DeleteValue
    };

    Kind kind = Kind::CreateKey;
    QString path; ///< the whole path as in the text, from the root's name on ("HKEY_LOCAL_MACHINE\\...")
    QString name; ///< of the value; empty for the default value
    quint32 type = 0;
    QByteArray data; ///< as the registry stores it
    int line = 0; ///< from 1

    friend bool operator==(const Operation&, const Operation&) = default;
};

/// Where operations are carried out.
class Sink
{
public:
    virtual ~Sink() = default;
    virtual Status createKey(QStringView path) = 0;
    /// Deletes the key and all below it; a key that isn't there is no failure.
    virtual Status deleteKey(QStringView path) = 0;
    virtual Status setValue(QStringView path, QStringView name, quint32 type, const QByteArray& data) = 0;
    /// A value that isn't there is no failure.
    virtual Status deleteValue(QStringView path, QStringView name) = 0;
};

/// Reads the text: UTF-16LE with byte order mark, or UTF-8 with or without one. Fails with BadDatabase and a
/// detail that names the line; then nothing of the text is to be applied.
Result<std::vector<Operation>> parse(const QByteArray& bytes);

/// Carries the operations out in their order; stops at the first failure and names its line.
Status apply(const std::vector<Operation>& operations, Sink& sink);

/// The key and all below it as the registry editor writes it: UTF-16LE with byte order mark and CRLF.
/// `path` is what the key is called in the text. Fails with BadDatabase where a text can't carry what is
/// there, and its detail says what: names with line ends, zeros or half a surrogate pair, names that a
/// registry takes for equal or takes from no one, and keys of which a part can't be read.
Result<QByteArray> write(const regf::Key& key, const QString& path);

} // namespace quoril::regtext
