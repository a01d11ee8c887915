#pragma once

#include "platform/session.h"

#include <QString>
#include <QStringView>

namespace quoril {

/// The three-letter name that Windows has for the language of a host locale such as "de_AT.UTF-8@euro";
/// "ENU" for "C" and "POSIX", empty for a language without a name.
QString windowsLanguageName(QStringView hostLocale);

/// The host's locale of messages. For the user as the environment has it: the first of LC_ALL, LC_MESSAGES
/// and LANG that is set and, where that is neither "C" nor "POSIX", the first language of the list LANGUAGE
/// that Windows has a name for. For the system as its settings file has it, and the user's where there is
/// none.
QString hostLocaleName(Locale locale);

} // namespace quoril
