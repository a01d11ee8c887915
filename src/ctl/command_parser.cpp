#include "ctl/command_parser.h"

#include "ctl/moment.h"

#include <CLI/CLI.hpp>

#include <sstream>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

/// The arguments after the program's name, the last first.
std::vector<std::string> reversed(const QStringList& arguments)
{
    std::vector<std::string> reversed;
    for (qsizetype index = arguments.size() - 1; index > 0; --index)
        reversed.push_back(arguments[index].toStdString());
    return reversed;
}

/// Which of the required options and arguments are missing, in the words of the help: "NAME... --for STATE".
std::string missingOptions(const CLI::App& app)
{
    std::string missing;
    for (const CLI::Option* const option : app.get_options()) {
        if (!option->get_required() || option->count() > 0)
            continue;
        if (!missing.empty())
            missing += ' ';
        if (!option->get_positional())
            missing += option->get_name() + ' ';
        else if (option->get_items_expected_max() > 1)
            missing += "at least one ";
        missing += option->get_type_name();
    }
    return missing;
}

/// The subcommand that the command line named, or the program where it named none.
const CLI::App& chosenIn(const CLI::App& app)
{
    const auto subcommands = app.get_subcommands();
    return subcommands.empty() ? app : chosenIn(*subcommands.back());
}

} // namespace

const ParsedOption& ParsedOption::required() const
{
    m_option->required();
    return *this;
}

const ParsedOption& ParsedOption::valueName(const char* name) const
{
    m_option->type_name(name);
    return *this;
}

const ParsedOption& ParsedOption::excludes(const ParsedOption& other) const
{
    m_option->excludes(other.m_option);
    return *this;
}

const ParsedOption& ParsedOption::oneOf(const QStringList& words) const
{
    m_option->check([words](const std::string& given) {
        return words.contains(QString::fromStdString(given), Qt::CaseInsensitive)
            ? std::string()
            : '"' + given + "\" is none of " + words.join(u", "_s).toStdString();
    });
    return *this;
}

const ParsedOption& ParsedOption::notEmpty() const
{
    m_option->check([](const std::string& value) { return value.empty() ? "it is empty" : ""; });
    return *this;
}

ParsedOption CommandParser::addFlag(const char* name, bool& given, const char* description) const
{
    return ParsedOption(m_app->add_flag(name, given, description));
}

ParsedOption CommandParser::addNumber(const char* name, quint32& number, const char* description) const
{
    const auto take = [name, &number](const std::string& given) {
        if (!CLI::detail::lexical_cast(given, number))
            throw CLI::ValidationError(name, '"' + given + "\" is not a whole number");
    };
    return ParsedOption(m_app->add_option_function<std::string>(name, take, description));
}

ParsedOption CommandParser::addDuration(
    const char* name, quint32& seconds, quint32 leastSeconds, const char* description) const
{
    constexpr qint64 longest = 86400;
    const auto take = [name, &seconds, leastSeconds](const std::string& given) {
        const auto duration = parseDuration(QString::fromStdString(given));
        if (!duration || *duration < leastSeconds || *duration > longest)
            throw CLI::ValidationError(name,
                '"' + given + "\" is not a time from " + std::to_string(leastSeconds)
                    + "s to 24h; write 90s, 15m or 2h");
        seconds = quint32(*duration);
    };
    return ParsedOption(
        m_app->add_option_function<std::string>(name, take, description)->type_name("DURATION"));
}

ParsedOption CommandParser::addText(const char* name, QString& text, const char* description) const
{
    return ParsedOption(m_app->add_option_function<std::string>(
        name, [&text](const std::string& given) { text = QString::fromStdString(given); }, description));
}

ParsedOption CommandParser::addTexts(const char* name, QStringList& texts, const char* description) const
{
    const auto take = [&texts](const std::vector<std::string>& given) {
        for (const std::string& each : given)
            texts.append(QString::fromStdString(each));
    };
    return ParsedOption(m_app->add_option_function<std::vector<std::string>>(name, take, description));
}

CommandParser CommandParser::addSubcommand(
    const char* name, const char* description, std::function<void()> chosen) const
{
    CLI::App* const subcommand = m_app->add_subcommand(name, description);
    subcommand->callback(std::move(chosen));
    return CommandParser(subcommand);
}

CommandParser CommandParser::addGroup(const char* name, const char* description) const
{
    CLI::App* const group = m_app->add_subcommand(name, description);
    group->require_subcommand(1);
    group->fallthrough();
    return CommandParser(group);
}

CommandLineParser::CommandLineParser(
    const char* name, const char* version, const char* description, const char* footer)
    : m_app(std::make_unique<CLI::App>(description, name))
{
    m_app->footer(footer);
    m_app->require_subcommand(1);
    m_app->fallthrough();
    m_app->set_version_flag("--version", version, "Print the version and exit");
    m_app->set_help_flag("-h,--help", "Print this help and exit");
}

CommandLineParser::~CommandLineParser() = default;

CommandLineParser::Outcome CommandLineParser::parse(const QStringList& arguments)
{
    try {
        m_app->parse(reversed(arguments));
        return {};
    } catch (const CLI::ParseError& error) {
        std::ostringstream out;
        std::ostringstream errors;
        if (m_app->exit(error, out, errors) == 0)
            return {Outcome::Answered, QString::fromStdString(out.str()).trimmed()};
        if (m_app->get_subcommands().empty() && m_app->remaining_size() > 0)
            return {Outcome::UnknownSubcommand, QString::fromStdString(m_app->remaining().front())};
        const CLI::App& chosen = chosenIn(*m_app);
        const std::string missing = missingOptions(chosen);
        if (dynamic_cast<const CLI::RequiredError*>(&error) && !missing.empty())
            return {Outcome::Wrong,
                QString::fromStdString(
                    chosen.get_name() + ": give " + missing + "\nRun with --help for more information.")};
        return {Outcome::Wrong, QString::fromStdString(errors.str()).trimmed()};
    }
}

} // namespace quoril
