#include "ctl/instances.h"

#include "ctl/advice.h"
#include "ctl/output.h"
#include "ctl/subcommand.h"
#include "formats/name_case.h"
#include "platform/services.h"
#include "resources/resource_module.h"
#include "resources/text_ids.h"
#include "services/service_engine.h"

#include <algorithm>
#include <array>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

struct Word
{
    quint32 number;
    QStringView word;
};

constexpr std::array<Word, 7> States = {{
    {service_state::Stopped, u"stopped"},
    {service_state::StartPending, u"start-pending"},
    {service_state::StopPending, u"stop-pending"},
    {service_state::Running, u"running"},
    {service_state::ContinuePending, u"continue-pending"},
    {service_state::PausePending, u"pause-pending"},
    {service_state::Paused, u"paused"},
}};

constexpr std::array<Word, 5> StartTypes = {{
    {start_type::Boot, u"boot"},
    {start_type::System, u"system"},
    {start_type::Automatic, u"automatic"},
    {start_type::Manual, u"manual"},
    {start_type::Disabled, u"disabled"},
}};

template <std::size_t Size> QString wordOf(const std::array<Word, Size>& words, quint32 number)
{
    const auto found = std::find_if(
        words.begin(), words.end(), [number](const Word& word) { return word.number == number; });
    return found == words.end() ? u"unknown"_s : found->word.toString();
}

template <std::size_t Size> QStringList wordsOf(const std::array<Word, Size>& words)
{
    QStringList all;
    for (const Word& word : words)
        all.append(word.word.toString());
    return all;
}

} // namespace

bool Instances::read(Ctl& ctl, CatalogueScan scan)
{
    const Status scanned
        = scanInstances(scan, [this](const ServiceInfo& service) { m_services.push_back(service); });
    if (!scanned) {
        failure(ctl, u"The instances can't be listed."_s, scanned.errorNumber());
        if (scanned.errorNumber() == error::FileNotFound || scanned.errorNumber() == error::PathNotFound)
            ctl.console.report(u"A machine is a folder with Windows/System32/config/SYSTEM in it; "
                               "\"quorilctl machine create FOLDER\" makes a sample."_s);
    }
    return scanned.ok();
}

ServiceInfo* Instances::lookUp(const QString& name)
{
    auto found = std::ranges::find(m_services, name, &ServiceInfo::Name);
    if (found == m_services.end())
        found = std::ranges::find_if(
            m_services, [&name](const ServiceInfo& service) { return foldedEquals(service.Name, name); });
    return found != m_services.end() ? &*found : nullptr;
}

ServiceInfo* Instances::find(Ctl& ctl, const QString& name)
{
    if (ServiceInfo* const found = lookUp(name))
        return found;
    failure(ctl, loadText(text::ServiceConnectFailed) + u' ' + name, error::ServiceDoesNotExist);
    adviseUnknown(ctl, name);
    return nullptr;
}

std::optional<std::vector<ServiceInfo*>> Instances::select(Ctl& ctl, const QStringList& names)
{
    std::vector<ServiceInfo*> selected;
    if (names.isEmpty()) {
        for (ServiceInfo& service : all())
            selected.push_back(&service);
    }
    bool known = true;
    for (const QString& name : names) {
        selected.push_back(find(ctl, name));
        known = known && selected.back();
    }
    return known ? std::optional(selected) : std::nullopt;
}

QString stateWord(quint32 currentState)
{
    return wordOf(States, currentState);
}

QString startTypeWord(qint32 startType)
{
    return wordOf(StartTypes, quint32(startType));
}

QStringList stateWords()
{
    return wordsOf(States);
}

QStringList startTypeWords()
{
    return wordsOf(StartTypes);
}

std::optional<qint32> startTypeOf(QStringView word)
{
    const auto found = std::find_if(StartTypes.begin(), StartTypes.end(),
        [word](const Word& known) { return foldedEquals(known.word, word); });
    return found == StartTypes.end() ? std::nullopt : std::optional(qint32(found->number));
}

QStringList prerequisitesOf(const ServiceInfo& service)
{
    constexpr qsizetype configBytes = 4096;
    QStringList names;
    const auto act = [&names](Service& open) -> Status {
        const auto config = open.queryConfig(configBytes);
        if (!config)
            return config.failure();
        names = config->dependencies;
        return {};
    };
    (void)operateService({service.Name, service_access::QueryConfig}, act);
    return names;
}

bool askState(ServiceInfo& service)
{
    service.StartType = -1;
    return service.QueryState() == 0;
}

int instanceFailure(Ctl& ctl, const ServiceInfo& service)
{
    return failure(ctl, service.Message, service.Reason);
}

int printStatus(Ctl& ctl, const std::vector<ServiceInfo*>& services, bool single)
{
    int code = exit_code::Done;
    TextTable table({u"NAME"_s, u"STATE"_s, u"START TYPE"_s});
    std::optional<JsonArray> array;
    if (ctl.json && !single)
        array.emplace(ctl.console);
    for (ServiceInfo* const service : services) {
        const bool asked = askState(*service);
        if (!asked)
            code = instanceFailure(ctl, *service);
        const QString state = asked ? stateWord(service->Reported.currentState) : u"unknown"_s;
        const bool hasType = asked && service->ConfigError == error::Success;
        if (asked && !hasType)
            code = failure(
                ctl, u"The start type of \"%1\" can't be read."_s.arg(service->Name), service->ConfigError);
        const QString startType = hasType ? startTypeWord(service->StartType) : u"unknown"_s;
        const QJsonObject object{{"name"_L1, service->Name}, {"state"_L1, state}, {"startType"_L1, startType},
            {"exitCode"_L1, qint64(service->Reported.win32ExitCode)}};
        if (!ctl.json)
            table.add({service->Name, state, startType});
        else if (array)
            array->add(object);
        else
            printJson(ctl.console, object);
    }
    if (!ctl.json)
        table.print(ctl.console);
    return code;
}

} // namespace quoril
