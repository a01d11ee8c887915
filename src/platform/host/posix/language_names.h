#pragma once

#include "platform/session.h"

#include <QString>
#include <QStringView>

namespace quoril {

/// The three-letter name that Windows has for the language of a host locale such as "de_AT.UTF-8@euro";
/// "ENU" for "C" and "POSIX", empty for a language without a name.
QString windowsLanguageName(QStringView hostLocale);

/// The host's locale of messages: for the user as the environment has it (LC_ALL, LC_MESSAGES, LANG), for the
/// system as its settings file has it, and the user's where there is none.
QString hostLocaleName(Locale locale);

} // namespace quoril
