#include "shell/language_module.h"

#include "formats/name_case.h"
#include "platform/machine.h"
#include "platform/session.h"
#include "resources/resource_module.h"

#include <QFile>

namespace quoril {

using namespace Qt::StringLiterals;

LanguageChoice LoadLanguageModule(const QString& programFolder)
{
    LanguageChoice choice;
    const Session& session = machine().session();
    QString language = session.abbreviatedLanguageName(Locale::UserDefault);
    if (language.isEmpty())
        language = session.abbreviatedLanguageName(Locale::SystemDefault);
    if (language.isEmpty())
        return choice;
    language = upcase(language);

    const QString LangDllName = programFolder + u"QuorilManagerLang"_s + language + u".dll"_s;
    const QString HlpFileName = programFolder + u"QuorilManager"_s + language + u".hlp"_s;
    if (QFile(HlpFileName).open(QIODevice::ReadOnly))
        choice.helpFile = HlpFileName;

    ResourceModule module = ResourceModule::load(LangDllName);
    if (!module.loaded())
        return choice;
    ActivateResourceModule(std::move(module));
    choice.moduleActive = true;
    return choice;
}

} // namespace quoril
