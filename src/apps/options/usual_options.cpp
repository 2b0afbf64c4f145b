#include "apps/options/usual_options.h"

#include <string>

#include "config/logs/program_version.h"
#include "config/settings/option_list.h"

namespace tarno2 {

namespace {

/// The kind of value, or the words between the braces that the library shows of an option with a choice: "{csv,wav}".
std::string valueOf(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    const size_t begin = type.find('{');
    const size_t end = type.rfind('}');
    return begin == std::string::npos || end == std::string::npos ? type.substr(0, type.find(':'))
                                                                  : type.substr(begin, end - begin + 1);
}

std::string listOf(const CLI::App& app, const std::string& command) {
    std::string text;
    for (const CLI::Option* const option :
         app.get_options([](const CLI::Option* each) { return !each->get_group().empty(); })) {
        const std::string value = option->get_expected_max() == 0 ? "" : valueOf(*option);
        if (option->get_positional()) {
            text += optionLine(command, option->get_name(true), value, option->get_description());
            continue;
        }
        for (const std::string& name : option->get_snames()) {
            text += optionLine(command, '-' + name, value, option->get_description());
        }
        for (const std::string& name : option->get_lnames()) {
            text += optionLine(command, "--" + name, value, option->get_description());
        }
    }
    for (const CLI::App* const below : app.get_subcommands([](const CLI::App*) { return true; })) {
        text += optionLine(command, below->get_name(), "COMMAND", below->get_description());
        text += listOf(*below, below->get_name());
    }
    return text;
}

}  // namespace

void addUsualOptions(CLI::App& app) {
    app.set_version_flag("--version", app.get_name() + ' ' + versionText(), "Tell which version it is");
    const auto list = [&app] {
        std::string text = listOf(app, "");
        text.pop_back();  // the library ends it again
        throw CLI::CallForVersion(text, 0);
    };
    app.add_flag_callback("--list-options", list, "")->group("");
}

}  // namespace tarno2
