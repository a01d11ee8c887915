#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace quoril {

/// An option or argument of a subcommand. It belongs to its parser.
class ParsedOption
{
public:
    explicit ParsedOption(CLI::Option* option) : m_option(option) { }

    const ParsedOption& required() const;
    /// What stands for its value in the help.
    const ParsedOption& valueName(const char* name) const;
    const ParsedOption& excludes(const ParsedOption& other) const;
    /// One of these words, in any case.
    const ParsedOption& oneOf(const QStringList& words) const;
    const ParsedOption& notEmpty() const;

private:
    CLI::Option* m_option;
};

/// The options of the program or of one of its subcommands. Each is bound to a variable that lives as long as
/// the parse. The names are those of the command line: "-o,--output" for an option, "file" for an argument.
class CommandParser
{
public:
    explicit CommandParser(CLI::App* app) : m_app(app) { }

    ParsedOption addFlag(const char* name, bool& given, const char* description) const;
    ParsedOption addNumber(const char* name, quint32& number, const char* description) const;
    /// A time span such as 90, 90s, 15m or 2h, of at most a day.
    ParsedOption addDuration(
        const char* name, quint32& seconds, quint32 leastSeconds, const char* description) const;
    /// A name, path or other text that is given once.
    ParsedOption addText(const char* name, QString& text, const char* description) const;
    /// Several of them.
    ParsedOption addTexts(const char* name, QStringList& texts, const char* description) const;

    /// `chosen` is called when the command line names it.
    CommandParser addSubcommand(
        const char* name, const char* description, std::function<void()> chosen) const;
    /// A word with subcommands of its own, one of which has to follow.
    CommandParser addGroup(const char* name, const char* description) const;

private:
    CLI::App* m_app;
};

/// The command line of a program with subcommands.
class CommandLineParser
{
public:
    /// The texts stand above and below the list of subcommands; `version` is what --version prints.
    CommandLineParser(const char* name, const char* version, const char* description, const char* footer);
    ~CommandLineParser();
    CommandLineParser(const CommandLineParser&) = delete;
    CommandLineParser& operator=(const CommandLineParser&) = delete;

    CommandParser program() const { return CommandParser(m_app.get()); }

    struct Outcome
    {
        enum Kind
        {
            Chosen, ///< a subcommand was called
            Answered, ///< help or version was asked for: the text
            UnknownSubcommand, ///< the word that is none
            Wrong ///< what is wrong with the command line
        };
        Kind kind = Chosen;
        QString text;
    };
    /// The arguments, the program's name first. To be called once.
    Outcome parse(const QStringList& arguments);

private:
    std::unique_ptr<CLI::App> m_app;
};

} // namespace quoril
