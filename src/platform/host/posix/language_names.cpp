#include "platform/host/posix/language_names.h"

#include <QFile>
#include <QStringList>

#include <algorithm>
#include <iterator>
#include <utility>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

struct Language
{
    QStringView locale;
    QStringView name;
};

// A language alone stands for the country that Windows takes for it.
// clang-format off
constexpr Language languages[] = {
    {u"af", u"AFK"}, {u"am", u"AMH"}, {u"ar", u"ARA"}, {u"ar_AE", u"ARU"}, {u"ar_BH", u"ARH"},
    {u"ar_DZ", u"ARG"}, {u"ar_EG", u"ARE"}, {u"ar_IQ", u"ARI"}, {u"ar_JO", u"ARJ"}, {u"ar_KW", u"ARK"},
    {u"ar_LB", u"ARB"}, {u"ar_LY", u"ARL"}, {u"ar_MA", u"ARM"}, {u"ar_OM", u"ARO"}, {u"ar_QA", u"ARQ"},
    {u"ar_SY", u"ARS"}, {u"ar_TN", u"ART"}, {u"ar_YE", u"ARY"}, {u"as", u"ASM"}, {u"az", u"AZE"},
    {u"az@cyrillic", u"AZC"}, {u"be", u"BEL"}, {u"bg", u"BGR"}, {u"bn", u"BNG"}, {u"bo", u"BOB"},
    {u"br", u"BRE"}, {u"bs", u"BSB"}, {u"bs@cyrillic", u"BSC"}, {u"ca", u"CAT"}, {u"co", u"COS"},
    {u"cs", u"CSY"}, {u"cy", u"CYM"}, {u"da", u"DAN"}, {u"de", u"DEU"}, {u"de_AT", u"DEA"},
    {u"de_CH", u"DES"}, {u"de_LI", u"DEC"}, {u"de_LU", u"DEL"}, {u"dsb", u"DSB"}, {u"el", u"ELL"},
    {u"en", u"ENU"}, {u"en_AU", u"ENA"}, {u"en_BZ", u"ENL"}, {u"en_CA", u"ENC"}, {u"en_GB", u"ENG"},
    {u"en_IE", u"ENI"}, {u"en_IN", u"ENN"}, {u"en_JM", u"ENJ"}, {u"en_MY", u"ENM"}, {u"en_NZ", u"ENZ"},
    {u"en_PH", u"ENP"}, {u"en_SG", u"ENE"}, {u"en_TT", u"ENT"}, {u"en_ZA", u"ENS"}, {u"en_ZW", u"ENW"},
    {u"es", u"ESN"}, {u"es_AR", u"ESS"}, {u"es_BO", u"ESB"}, {u"es_CL", u"ESL"}, {u"es_CO", u"ESO"},
    {u"es_CR", u"ESC"}, {u"es_DO", u"ESD"}, {u"es_EC", u"ESF"}, {u"es_GT", u"ESG"}, {u"es_HN", u"ESH"},
    {u"es_MX", u"ESM"}, {u"es_NI", u"ESI"}, {u"es_PA", u"ESA"}, {u"es_PE", u"ESR"}, {u"es_PR", u"ESU"},
    {u"es_PY", u"ESZ"}, {u"es_SV", u"ESE"}, {u"es_US", u"EST"}, {u"es_UY", u"ESY"}, {u"es_VE", u"ESV"},
    {u"et", u"ETI"}, {u"eu", u"EUQ"}, {u"fa", u"FAR"}, {u"fi", u"FIN"}, {u"fo", u"FOS"}, {u"fr", u"FRA"},
    {u"fr_BE", u"FRB"}, {u"fr_CA", u"FRC"}, {u"fr_CH", u"FRS"}, {u"fr_LU", u"FRL"}, {u"fr_MC", u"FRM"},
    {u"fy", u"FYN"}, {u"ga", u"IRE"}, {u"gd", u"GLA"}, {u"gl", u"GLC"}, {u"gu", u"GUJ"}, {u"ha", u"HAU"},
    {u"he", u"HEB"}, {u"hi", u"HIN"}, {u"hr", u"HRV"}, {u"hr_BA", u"HRB"}, {u"hsb", u"HSB"},
    {u"hu", u"HUN"}, {u"hy", u"HYE"}, {u"id", u"IND"}, {u"ig", u"IBO"}, {u"is", u"ISL"}, {u"it", u"ITA"},
    {u"it_CH", u"ITS"}, {u"iw", u"HEB"}, {u"ja", u"JPN"}, {u"ka", u"KAT"}, {u"kk", u"KKZ"}, {u"km", u"KHM"},
    {u"kn", u"KDI"}, {u"ko", u"KOR"}, {u"ky", u"KYR"}, {u"lb", u"LBX"}, {u"lo", u"LAO"}, {u"lt", u"LTH"},
    {u"lv", u"LVI"}, {u"mi", u"MRI"}, {u"mk", u"MKI"}, {u"ml", u"MYM"}, {u"mn", u"MNN"}, {u"mr", u"MAR"},
    {u"ms", u"MSL"}, {u"ms_BN", u"MSB"}, {u"mt", u"MLT"}, {u"nb", u"NOR"}, {u"ne", u"NEP"}, {u"nl", u"NLD"},
    {u"nl_BE", u"NLB"}, {u"nn", u"NON"}, {u"no", u"NOR"}, {u"oc", u"OCI"}, {u"or", u"ORI"}, {u"pa", u"PAN"},
    {u"pl", u"PLK"}, {u"ps", u"PAS"}, {u"pt", u"PTG"}, {u"pt_BR", u"PTB"}, {u"ro", u"ROM"}, {u"ru", u"RUS"},
    {u"sa", u"SAN"}, {u"si", u"SIN"}, {u"sk", u"SKY"}, {u"sl", u"SLV"}, {u"sq", u"SQI"}, {u"sr", u"SRB"},
    {u"sr@latin", u"SRL"}, {u"sv", u"SVE"}, {u"sv_FI", u"SVF"}, {u"sw", u"SWK"}, {u"ta", u"TAM"},
    {u"te", u"TEL"}, {u"tg", u"TAJ"}, {u"th", u"THA"}, {u"tk", u"TUK"}, {u"tn", u"TSN"}, {u"tr", u"TRK"},
    {u"tt", u"TTT"}, {u"ug", u"UIG"}, {u"uk", u"UKR"}, {u"ur", u"URD"}, {u"uz", u"UZB"},
    {u"uz@cyrillic", u"UZC"}, {u"vi", u"VIT"}, {u"xh", u"XHO"}, {u"yo", u"YOR"}, {u"zh", u"CHS"},
    {u"zh_HK", u"ZHH"}, {u"zh_MO", u"ZHM"}, {u"zh_SG", u"ZHI"}, {u"zh_TW", u"CHT"}, {u"zu", u"ZUL"},
};
// clang-format on

QString find(QStringView locale)
{
    const auto* found
        = std::find_if(std::begin(languages), std::end(languages), [locale](const Language& language) {
              return language.locale.compare(locale, Qt::CaseInsensitive) == 0;
          });
    return found == std::end(languages) ? QString() : found->name.toString();
}

/// Whether a locale without modifier is the one of programs that speak to no person.
bool isPlain(QStringView locale)
{
    const QStringView place = locale.left(locale.indexOf(u'.') < 0 ? locale.size() : locale.indexOf(u'.'));
    return place == u"C" || place == u"POSIX";
}

/// The value of LANG in a file of shell assignments, empty if it has none.
QString langOf(const QString& fileName)
{
    constexpr qint64 enough = 4096;
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    for (const QByteArray& line : file.read(enough).split('\n')) {
        if (line.trimmed().startsWith("LANG="))
            return QString::fromUtf8(line.trimmed().sliced(5)).remove(u'"').remove(u'\'');
    }
    return {};
}

} // namespace

QString windowsLanguageName(QStringView hostLocale)
{
    const qsizetype at = hostLocale.indexOf(u'@');
    const QStringView modifier = at < 0 ? QStringView() : hostLocale.mid(at);
    const QStringView plain = hostLocale.left(at < 0 ? hostLocale.size() : at);
    const QStringView place = plain.left(plain.indexOf(u'.') < 0 ? plain.size() : plain.indexOf(u'.'));
    if (isPlain(place))
        return u"ENU"_s;
    const QStringView language = place.left(place.indexOf(u'_') < 0 ? place.size() : place.indexOf(u'_'));
    QStringList keys = {place.toString(), language.toString()};
    if (!modifier.isEmpty())
        keys.prepend(language.toString().append(modifier));
    for (const QString& key : std::as_const(keys)) {
        if (const QString name = find(key); !name.isEmpty())
            return name;
    }
    return {};
}

QString hostLocaleName(Locale locale)
{
    if (locale == Locale::SystemDefault) {
        for (const QString& fileName : {u"/etc/locale.conf"_s, u"/etc/default/locale"_s}) {
            if (QString name = langOf(fileName); !name.isEmpty())
                return name;
        }
    }
    QString messages = u"C"_s;
    for (const char* variable : {"LANG", "LC_MESSAGES", "LC_ALL"}) {
        if (QString name = qEnvironmentVariable(variable); !name.isEmpty())
            messages = std::move(name);
    }
    if (isPlain(messages))
        return messages;
    for (QString& language : qEnvironmentVariable("LANGUAGE").split(u':', Qt::SkipEmptyParts)) {
        if (!windowsLanguageName(language).isEmpty())
            return std::move(language);
    }
    return messages;
}

} // namespace quoril
