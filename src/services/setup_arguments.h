#pragma once

#include <QString>
#include <QStringList>

namespace quoril {

/// The command line of QuorilSetup.
struct SetupArguments
{
    enum class Kind
    {
        Run,
        Help, ///< the message is for standard output
        Wrong ///< the message says what is wrong with the command line
    };

    Kind kind = Kind::Wrong;
    QString message;

    QString productName;
    QString configurationFile; ///< a full path of the machine, of a file that exists
    QString imagePath; ///< the same

    /// Reads the arguments, the program first. Files may be named by their path on the machine or on the
    /// host. What the installer's command line can't carry is wrong.
    static SetupArguments read(const QStringList& arguments, const QString& programVersion);
};

} // namespace quoril
