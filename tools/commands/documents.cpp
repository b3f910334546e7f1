// Man pages in the macros of man(7), and a completion function for bash.

#include "tools/commands/documents.h"

#include "kit/files/wholeFile.h"
#include "tools/common/failure.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string>
#include <vector>

namespace ravolt::tool {

namespace {

using OptionList = std::vector<const CLI::Option *>;
using Apps = std::vector<const CLI::App *>;

Apps commandsOf(const CLI::App &program) {
    return program.get_subcommands([](const CLI::App *) { return true; });
}

bool takesValue(const CLI::Option &option) { return option.get_items_expected_max() > 0; }

// -o, --output
std::vector<std::string> namesOf(const CLI::Option &option) {
    std::vector<std::string> names;
    for (const std::string &name : option.get_snames())
        names.push_back("-" + name);
    for (const std::string &name : option.get_lnames())
        names.push_back("--" + name);
    return names;
}

// The words of "INT:{1,4,9}"; none for other types. More may follow, of how CLI11 converts them.
std::vector<std::string> choicesOf(const CLI::Option &option) {
    const std::string type = option.get_type_name();
    const std::size_t open = type.find('{'), close = type.find('}');
    std::vector<std::string> words;
    if (open == std::string::npos || close == std::string::npos)
        return words;
    for (std::size_t at = open + 1; at <= close;) {
        const std::size_t end = std::min(type.find(',', at), close);
        words.push_back(type.substr(at, end - at));
        at = end + 1;
    }
    return words;
}

std::string joined(const std::vector<std::string> &words, const char *between = " ") {
    std::string text;
    for (const std::string &word : words)
        text += (text.empty() ? "" : between) + word;
    return text;
}

// What stands for the value: the words, or the type without its range, which descriptions state.
std::string valueOf(const CLI::Option &option) {
    const std::vector<std::string> words = choicesOf(option);
    const std::string type = option.get_type_name();
    return words.empty() ? type.substr(0, type.find(':')) : joined(words, "|");
}

// ---- man pages -------------------------------------------------------------------------------

std::string escaped(const std::string &text) {
    std::string roff;
    for (const char c : text) {
        if ((c == '.' || c == '\'') && (roff.empty() || roff.back() == '\n'))
            roff += "\\&";
        roff += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
    }
    return roff;
}

std::string bold(const std::string &text) { return "\\fB" + escaped(text) + "\\fR"; }
std::string italic(const std::string &text) { return "\\fI" + escaped(text) + "\\fR"; }

std::string head(const std::string &page, const std::string &description) {
    std::string upper = page;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return ".TH " + upper + " 1 \"\" \"ravolt " RAVOLT_TOOL_VERSION "\" Ravolt\n.SH NAME\n" +
           escaped(page) + " \\- " + escaped(description) + "\n";
}

std::string optionEntry(const CLI::Option &option) {
    std::string names;
    for (const std::string &name : namesOf(option))
        names += (names.empty() ? "" : ", ") + bold(name);
    if (option.get_positional())
        names = italic(option.get_name());
    else if (takesValue(option))
        names += " " + italic(valueOf(option));
    std::string entry = ".TP\n" + names + "\n" + escaped(option.get_description());
    if (option.get_required())
        entry += " (required)";
    if (!option.get_default_str().empty())
        entry += " (" + escaped(option.get_default_str()) + ")";
    return entry + "\n";
}

// Without the empty lines at its end, which are none of a paragraph.
std::string footerOf(const CLI::App &app) {
    std::string text = app.get_footer();
    text.erase(text.find_last_not_of('\n') + 1);
    return escaped(text);
}

std::string commandPage(const CLI::App &command) {
    std::string synopsis = ".B ravolt " + escaped(command.get_name()) + "\n";
    std::string options;
    for (const CLI::Option *option : command.get_options()) {
        if (option->get_positional())
            synopsis += italic(option->get_name()) +
                        (option->get_items_expected_max() > 1 ? "...\n" : "\n");
        options += optionEntry(*option);
    }
    return head("ravolt-" + command.get_name(), command.get_description()) + ".SH SYNOPSIS\n" +
           synopsis + "[" + italic("OPTIONS") + "]\n.SH OPTIONS\n" + options + ".SH NOTES\n.nf\n" +
           footerOf(command) + "\n.fi\n.SH SEE ALSO\n.BR ravolt (1)\n";
}

std::string programPage(const CLI::App &program) {
    std::string entries, others;
    for (const CLI::App *command : commandsOf(program)) {
        const std::string page = escaped("ravolt-" + command->get_name());
        entries +=
            ".TP\n" + bold(command->get_name()) + "\n" + escaped(command->get_description()) + "\n";
        others += (others.empty() ? ".BR " : " (1),\n.BR ") + page;
    }
    return head("ravolt", program.get_description()) + ".SH SYNOPSIS\n.B ravolt\n" +
           italic("COMMAND") + "\n[" + italic("OPTIONS") + "]\n.SH COMMANDS\n" + entries +
           ".SH NOTES\n.nf\n" + footerOf(program) + "\n.fi\n.SH SEE ALSO\n" + others + " (1)\n";
}

// ---- completion ------------------------------------------------------------------------------

// Values of an option, where they are words or folders; files otherwise, which are bash's default.
std::string valueCase(const std::string &command, const CLI::Option &option) {
    const std::string words = joined(choicesOf(option));
    const std::string generated = !words.empty() ? "-W '" + words + "'" : "-d";
    if (!takesValue(option) || (words.empty() && option.get_type_name() != "DIR"))
        return "";
    std::vector<std::string> patterns;
    for (const std::string &name : namesOf(option))
        patterns.push_back(command + ":" + name);
    return "    " + joined(patterns, " | ") + ") mapfile -t COMPREPLY < <(compgen " + generated +
           " -- \"$word\"); return ;;\n";
}

std::string completion(const CLI::App &program) {
    std::string values, words;
    std::vector<std::string> names;
    for (const CLI::App *command : commandsOf(program)) {
        names.push_back(command->get_name());
        std::vector<std::string> options;
        for (const CLI::Option *option : command->get_options()) {
            for (const std::string &name : namesOf(*option))
                options.push_back(name);
            if (!option->get_positional())
                values += valueCase(command->get_name(), *option);
        }
        words += "    " + command->get_name() + ") words='" + joined(options) + "' ;;\n";
    }
    return "# Completion of ravolt for bash, made of the options of the program.\n"
           "_ravolt() {\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}\n"
           "    local command=${COMP_WORDS[1]} words=''\n"
           "    COMPREPLY=()\n"
           "    if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
           "        words='" +
           joined(names) +
           " --help --version'\n"
           "        mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$word\")\n"
           "        return\n"
           "    fi\n"
           "    case $command:$before in\n" +
           values +
           "    esac\n"
           "    case $word in\n"
           "    -*) ;;\n"
           "    *) return ;; # a file, which is the default\n"
           "    esac\n"
           "    case $command in\n" +
           words +
           "    esac\n"
           "    mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$word\")\n"
           "}\n"
           "complete -o default -F _ravolt ravolt\n";
}

void write(const std::filesystem::path &file, const std::string &text) {
    const std::string error = writeWholeFile(file.string(), {text.begin(), text.end()});
    if (!error.empty())
        throw Failure(error);
}

} // namespace

void writeDocuments(const CLI::App &program, const std::filesystem::path &folder) {
    write(folder / "ravolt.1", programPage(program));
    for (const CLI::App *command : commandsOf(program))
        write(folder / ("ravolt-" + command->get_name() + ".1"), commandPage(*command));
    write(folder / "ravolt", completion(program));
}

} // namespace ravolt::tool
