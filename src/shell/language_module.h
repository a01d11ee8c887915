#pragma once

#include <QString>

namespace quoril {

/// What the search for a language module and a help file came to.
struct LanguageChoice
{
    /// Host path of the help file of the user's language; empty if there is none that can be read.
    QString helpFile;
    /// A language module is active.
    bool moduleActive = false;
};

/// Looks beside the program, in the folder given with its closing separator, for the help file and the
/// language module of the user's locale, else of the system's, and activates the module. Failures are silent:
/// the built-in texts and the default help file serve.
LanguageChoice LoadLanguageModule(const QString& programFolder);

} // namespace quoril
