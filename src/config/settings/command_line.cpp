#include "config/settings/command_line.h"

#include <array>

namespace tarno2 {

namespace {

constexpr ProgramOption kRecord = {"/c", "FILE", "Record once, as the autosettings file says"};
constexpr ProgramOption kStatus = {"--status", "", "Before /c: the exit status tells what came of it"};
constexpr ProgramOption kVersion = {"--version", "", "Tell which version it is"};
constexpr ProgramOption kUsage = {"/?", "", "Tell how to use the program"};
constexpr ProgramOption kOpen = {"--open", "FILE", "Show the window, with a recording"};
constexpr std::string_view kList = "--list-options";

/// What needs a window comes last.
constexpr std::array kOptions = {kRecord, kStatus, kVersion, kUsage, kOpen};

/// What follows an option and a blank; nothing when the text begins otherwise.
bool follows(std::string_view& text, const ProgramOption& option) {
    if (!text.starts_with(option.name) || text.substr(option.name.size(), 1) != " ") {
        return false;
    }
    text.remove_prefix(option.name.size() + 1);
    return true;
}

/// Command lines of Windows have names in quotes.
std::string_view withoutQuotes(std::string_view path) {
    const bool quoted = path.size() > 2 && path.front() == '"' && path.back() == '"';
    return quoted ? path.substr(1, path.size() - 2) : path;
}

}  // namespace

CommandLine parseCommandLine(std::string_view argumentText) {
    if (argumentText.empty()) {
        return {};
    }
    if (follows(argumentText, kStatus)) {
        CommandLine line = parseCommandLine(argumentText);
        line.mode = line.mode == CommandLine::Console ? CommandLine::Console : CommandLine::Usage;
        line.status = true;
        return line;
    }
    if (follows(argumentText, kRecord) || follows(argumentText, {"/C", "", ""})) {
        return {CommandLine::Console, std::string(argumentText)};
    }
    if (argumentText == kOpen.name) {
        return {};
    }
    if (follows(argumentText, kOpen)) {
        return {CommandLine::Open, std::string(withoutQuotes(argumentText))};
    }
    if (argumentText == kList) {
        return {CommandLine::Options, {}};
    }
    return {argumentText == kVersion.name ? CommandLine::Version : CommandLine::Usage, {}};
}

std::span<const ProgramOption> commandOptions(bool withWindow) {
    return std::span<const ProgramOption>(kOptions).first(kOptions.size() - (withWindow ? 0 : 1));
}

}  // namespace tarno2
