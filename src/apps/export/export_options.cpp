#include "apps/export/export_options.h"

#include <algorithm>
#include <iostream>
#include <optional>
#include <vector>

#include "apps/options/usual_options.h"
#include "records/export_names.h"
#include "records/number_text.h"

namespace tarno2 {

namespace {

constexpr int kGoOn = -1;
constexpr int kBadUse = 2;

/// In the order of `FirstColumn`.
const std::vector<std::string> kFirstColumns = {"none", "samples", "seconds", "clock"};

const std::vector<std::string> kDataColumns = {"codes", "volts", "units"};

/// What has to be worked on before it is a format or an input.
struct RawOptions {
    std::string format = "csv";
    std::string output;
    std::string firstColumn = "none";
    std::optional<std::string> data;
    std::string decimal = "point";
    std::string divider = "tab";
    uint32_t dividerCount = 1;
    std::vector<std::string> ranges;
    std::string digitalMask;
    bool signedCodes = false;
    bool unsignedCodes = false;
};

/// Takes whole numbers from 0 up. The library's own check names the largest number that there is, with all its digits.
CLI::Validator count() {
    return {[](std::string& text) {
                const bool plain = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
                return plain ? std::string() : text + " is no whole number from 0 up";
            },
            ""};
}

void addFormatOptions(CLI::App& app, ExportOptions& options, RawOptions& raw) {
    ExportFormat& format = options.task.format;
    const std::string group = "Lines of text";
    app.add_option("--first-column", raw.firstColumn, "What a line begins with (none)")
        ->check(CLI::IsMember(kFirstColumns))
        ->group(group);
    app.add_flag("--header", format.headings, "Begin with a line of headings: names and units of the passport")
        ->group(group);
    app.add_flag("--marks", format.marks, "End lines with a column of what was marked there")->group(group);
    app.add_option("--time-precision", format.timePrecision, "Decimals of the seconds, 0 to 9 (6)")
        ->check(CLI::Range(0, ExportFormat::kMaximumPrecision))
        ->group(group);
    app.add_option("--voltage-precision", format.voltagePrecision, "Decimals of the values, codes too, 0 to 9 (6)")
        ->check(CLI::Range(0, ExportFormat::kMaximumPrecision))
        ->group(group);
    app.add_option("--decimal", raw.decimal, "Decimal character (point)")
        ->check(CLI::IsMember(std::vector<std::string>{"point", "comma"}))
        ->group(group);
    app.add_option("--divider", raw.divider, "What parts the columns: tab, or one character (tab)")
        ->type_name("CHAR")
        ->group(group);
    app.add_option("--divider-count", raw.dividerCount, "How often it stands there, 1 to 99 (1)")
        ->check(CLI::Range(uint32_t{1}, ExportFormat::kMaximumDividerCount))
        ->group(group);
    app.add_option("--max-lines", format.maximumLines,
                   "Lines of an output file, at least 100, before the next one begins; 0 for one file (0)")
        ->check(count())
        ->group(group);
}

void addOutputOptions(CLI::App& app, ExportOptions& options, RawOptions& raw) {
    ExportTask& task = options.task;
    std::vector<std::string> formats;
    for (const ExporterRow& row : exporters()) {
        formats.emplace_back(row.name);
    }
    app.add_option("--format", raw.format, "Format of the output (csv, lines of text)")->check(CLI::IsMember(formats));
    app.add_option("-o,--output", task.outputName,
                   "Output file, - for the standard output; without it RECORDING with the format's extension");
    app.add_flag("--overwrite", task.replace, "Replace an output file that is there; text always does");
    app.add_option("--data", raw.data,
                   "What the columns of the channels hold; units: as the passport tells (codes; of sr volts)")
        ->check(CLI::IsMember(kDataColumns));
    app.add_option("--bits", task.sampleBits, "Bits of a sample in a .wav file (what the codes need)")
        ->check(CLI::IsMember(std::vector<uint32_t>{16, 24, 32}));
    app.add_option("--from", task.wish.from, "Where to begin: a frame from 0, or seconds: 1.5s")->type_name("PLACE");
    app.add_option("--to", task.wish.to, "The first frame, or the time, that is left out again")->type_name("PLACE");
    app.add_option("--every", task.wish.every, "Take one frame of so many (1)")->check(count());
    app.add_option("--channels", task.wish.channels,
                   "Names or numbers of channels, or spans of numbers: 0-3,inlet (all). Where nothing tells how many "
                   "channels a frame has, a number is their count")
        ->type_name("LIST");
}

void addInputOptions(CLI::App& app, KnownInputs& known, RawOptions& raw) {
    const std::string group = "What the description tells, when there is none or better is known";
    app.add_option("--width", known.bytesPerSample, "Bytes of a sample, 2 or 4")
        ->check(CLI::IsMember(std::vector<uint32_t>{2, 4}))
        ->group(group);
    app.add_option("--channel-count", known.channelCount, "Channels in a frame")->check(count())->group(group);
    app.add_option("--frequency", known.frequency, "Sampling frequency of one channel, Hz")->group(group);
    app.add_option("--packet-frequency", known.packetFrequency, "Frequency of the packets, Hz")->group(group);
    app.add_option("--range", raw.ranges, "Limits of a channel, V, for example 5:-5; once for all or once a channel")
        ->type_name("UPPER:LOWER")
        ->allow_extra_args(false)
        ->group(group);
    app.add_option("--code-bits", known.codeBits, "Bits of a code")->check(count())->group(group);
    app.add_option("--code-shift", known.codeShift, "Bits below the code in a sample")->check(count())->group(group);
    CLI::Option* const isSigned = app.add_flag("--signed", raw.signedCodes, "Codes have a sign")->group(group);
    app.add_flag("--unsigned", raw.unsignedCodes, "Codes have no sign")->excludes(isSigned)->group(group);
    app.add_option("--code-min", known.codeMinimum, "Code of the lower limit")->group(group);
    app.add_option("--code-max", known.codeMaximum, "Code of the upper limit")->group(group);
    app.add_option("--digital-mask", raw.digitalMask, "Bits of the digital port in a frame's first sample, hexadecimal")
        ->type_name("HEX")
        ->group(group);
    app.add_option("--digital-shift", known.digitalShift, "Bits below the port")->check(count())->group(group);
    app.add_option("--digital-lines", known.digitalLines, "Lines of the port; 0 for none")
        ->check(count())
        ->group(group);
}

/// A number that fills the text to its end.
std::optional<double> wholeNumber(const std::string& text) {
    const bool plain = !text.empty() && text.find_first_not_of("+-.0123456789eE") == std::string::npos;
    return plain ? parseDouble(text) : std::nullopt;
}

void takeRanges(const std::vector<std::string>& texts, KnownInputs& known) {
    for (const std::string& text : texts) {
        const size_t colon = text.find(':');
        const auto upper = wholeNumber(text.substr(0, colon));
        const auto lower = colon == std::string::npos ? std::nullopt : wholeNumber(text.substr(colon + 1));
        if (!upper || !lower) {
            throw CLI::ValidationError("--range: " + text + " is no pair of limits such as 5:-5");
        }
        known.ranges.emplace_back(*upper, *lower);
    }
}

/// Takes over what has no form that the parser knows.
void finish(const RawOptions& raw, ExportOptions& options) {
    const auto column = std::find(kFirstColumns.begin(), kFirstColumns.end(), raw.firstColumn);
    ExportFormat& format = options.task.format;
    format.firstColumn = static_cast<FirstColumn>(column - kFirstColumns.begin());
    const std::string data = raw.data.value_or(options.task.row->usuallyVolts ? "volts" : "codes");
    format.volts = data != "codes";
    format.units = data == "units";
    format.decimal = raw.decimal == "comma" ? ',' : '.';
    const std::string symbol = raw.divider == "tab" ? "\t" : raw.divider;
    if (symbol.size() != 1) {
        throw CLI::ValidationError("--divider: " + raw.divider + " is neither tab nor one character");
    }
    format.divider = std::string(raw.dividerCount, symbol.front());
    takeRanges(raw.ranges, options.known);
    if (!raw.digitalMask.empty()) {
        options.known.digitalMask = parseHex32(raw.digitalMask);
        if (!options.known.digitalMask) {
            throw CLI::ValidationError("--digital-mask: " + raw.digitalMask + " is no hexadecimal number");
        }
    }
    if (raw.signedCodes || raw.unsignedCodes) {
        options.known.codeSigned = raw.signedCodes;
    }
    ExportTask& task = options.task;
    if (!raw.output.empty() && !task.outputName.empty()) {
        throw CLI::ValidationError("-o " + task.outputName + " and - are two outputs");
    }
    task.outputName += raw.output;
    if (task.outputName.empty()) {
        task.outputName = defaultOutputName(task.dataFile, task.row->extension);
    }
    if (task.outputName == kStandardOutput && format.maximumLines != 0) {
        throw CLI::ValidationError("--max-lines: the standard output is one file");
    }
}

/// An option that says nothing about the chosen format was meant for another one.
void refuseStrayOptions(const CLI::App& app, const ExporterRow& row) {
    const auto refuse = [&](uint32_t kind, const std::vector<const char*>& names) {
        for (const char* const name : names) {
            if ((row.options & kind) == 0 && app.count(name) > 0) {
                throw CLI::ValidationError(std::string(name) + " does not go with --format " + row.name);
            }
        }
    };
    refuse(kTextOptions, {"--first-column", "--header", "--marks", "--time-precision", "--voltage-precision",
                          "--decimal", "--divider", "--divider-count", "--max-lines"});
    refuse(kDataOption, {"--data"});
    refuse(kBitsOption, {"--bits"});
}

}  // namespace

int parseExportOptions(int argc, const char* const* argv, ExportOptions& options) {
    CLI::App app{"Converts a recording of Tarno2 to lines of text that a spreadsheet opens, or for other programs.",
                 "tarno2-export"};
    app.footer(
        "A piece of a recording that was cut is converted like a recording of its own.\n"
        "Formats: csv text; wav WAVE or, from 4 GiB on, RF64; sr a session of sigrok; npy NumPy; edf EDF+; bdf BDF+; "
        "dat a recording.\n"
        "docs/exports.md tells what is in them.\n"
        "Exit status: 0 done, 1 stopped, 2 bad use or bad input.");
    addUsualOptions(app);
    RawOptions raw;
    app.add_option("RECORDING", options.task.dataFile, "Data file; its description is looked for beside it")
        ->required();
    app.add_option("OUTPUT", raw.output, "- for the standard output")->check(CLI::IsMember({kStandardOutput}));
    addOutputOptions(app, options, raw);
    addFormatOptions(app, options, raw);
    app.add_flag("--quiet", options.quiet, "Show no progress and no warnings");
    addInputOptions(app, options.known, raw);
    try {
        app.parse(argc, argv);
        options.task.row = findExporter(raw.format);
        refuseStrayOptions(app, *options.task.row);
        finish(raw, options);
        return kGoOn;
    } catch (const CLI::Success& answer) {
        return app.exit(answer);
    } catch (const CLI::ParseError& error) {
        std::string line = error.what();
        std::replace(line.begin(), line.end(), '\n', ' ');
        std::cerr << "tarno2-export: " << line << " (--help tells more)\n";
        return kBadUse;
    }
}

}  // namespace tarno2
