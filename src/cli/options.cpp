#include "cli/options.h"

#include "cli/commands.h"
#include "cli/program_rules.h"
#include "cli/session.h"
#include "cli/word_completion.h"
#include "export/exports.h"
#include "files/paths.h"
#include "text/literals.h"
#include "text/nearest_name.h"

#include <CLI/CLI.hpp>

#include <QDir>
#include <QThread>

#include <algorithm>
#include <array>
#include <cerrno>
#include <iostream>
#include <limits>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

/// The command line as CLI11 reads it.
struct Arguments {
    std::string chip;
    std::string soft;
    std::string outputDirectory;
    std::string headersDirectory;
    std::string vhdlDirectory;
    std::string docsDirectory;
    std::string siteDirectory;
    std::string source;
    std::string destination;
    std::string format = "text";
    std::string exportFormat;
    std::string outputFile = "-";
    std::string mostOfAKind = "3";
    bool list = false;
    std::optional<bool> explains;
    bool skipUpToDate = false;
    bool types = false;
    bool accessors = false;
    bool globals = false;
    bool json = false;
    bool recursive = false;
    bool force = false;
    bool selfCheck = false;
    bool single = false;
    bool accepted = false;
    bool exact = false;
    std::vector<std::string> targets;
    std::vector<std::string> lines;
    bool keepsGoing = false;
    bool update = false;
    std::optional<std::string> imageFile;
    std::string imageAddress;
    std::optional<std::string> timeout;
    bool skipsVerifying = false;
    std::optional<std::string> threads;
    LintArguments lint;
    OutputArguments output;
    bool verbose = false;
    bool quiet = false;
};

QString directoryOf(const std::string &path)
{
    return QDir::cleanPath(QString::fromStdString(path));
}

Options optionsOf(const Arguments &arguments)
{
    Options options;
    options.chip = QString::fromStdString(arguments.chip);
    options.soft = QString::fromStdString(arguments.soft);
    options.outputDirectory = directoryOf(arguments.outputDirectory);
    options.headersDirectory = directoryOf(arguments.headersDirectory);
    options.vhdlDirectory = directoryOf(arguments.vhdlDirectory);
    options.docsDirectory = directoryOf(arguments.docsDirectory);
    options.siteDirectory = directoryOf(arguments.siteDirectory);
    options.source = QString::fromStdString(arguments.source);
    options.destination = QString::fromStdString(arguments.destination);
    options.format = QString::fromStdString(arguments.format);
    options.exportFormat = QString::fromStdString(arguments.exportFormat);
    options.outputFile = QString::fromStdString(arguments.outputFile);
    options.list = arguments.list;
    options.skipUpToDate = arguments.skipUpToDate;
    options.types = arguments.types;
    options.accessors = arguments.accessors;
    options.globals = arguments.globals;
    options.json = arguments.json;
    options.recursive = arguments.recursive;
    options.force = arguments.force;
    options.selfCheck = arguments.selfCheck;
    options.single = arguments.single;
    options.accepted = arguments.accepted;
    options.exact = arguments.exact;
    options.verifies = !arguments.skipsVerifying;
    for (const std::string &target : arguments.targets)
        options.targets += QString::fromStdString(target);
    for (const std::string &line : arguments.lines)
        options.lines += QString::fromStdString(line);
    options.keepsGoing = arguments.keepsGoing;
    options.update = arguments.update;
    return options;
}

/// Reads the image's address into \a options; false, with an error told, when it is no address.
bool takeImage(const Arguments &arguments, Options &options, Messages &messages)
{
    if (!arguments.imageFile)
        return true;
    if (arguments.imageFile->empty()) {
        messages.tell(rules::kNoImageName);
        return false;
    }
    const QString address = QString::fromStdString(arguments.imageAddress);
    const std::optional<quint32> number = addressOf(address);
    if (!number) {
        messages.tell(rules::kNoAddress, {address});
        return false;
    }
    options.image = {QString::fromStdString(*arguments.imageFile), *number};
    return true;
}

/// Reads how long a target may take for an answer into \a options; false, with an error told, when it is no time.
bool takeTimeout(const Arguments &arguments, Options &options, Messages &messages)
{
    if (!arguments.timeout)
        return true;
    const QString text = QString::fromStdString(*arguments.timeout);
    bool isNumber = false;
    const double seconds = text.toDouble(&isNumber);
    if (!isNumber || !(seconds >= 0.001 && seconds <= 3600)) {
        messages.tell(rules::kNoTimeout, {text});
        return false;
    }
    options.timeout = std::chrono::milliseconds(static_cast<int>(seconds * 1000));
    return true;
}

/// Reads how many threads make texts into \a options, all processors that the process may use if nothing is said;
/// false, with an error told, when it is no number of threads.
bool takeThreads(const Arguments &arguments, Options &options, Messages &messages)
{
    if (!arguments.threads) {
        options.threads = QThread::idealThreadCount();
        return true;
    }
    const QString text = QString::fromStdString(*arguments.threads);
    const std::optional<qint64> number = numberOf(text);
    if (!number || *number < 1) {
        messages.tell(rules::kNoThreads, {text});
        return false;
    }
    options.threads = static_cast<int>(qMin<qint64>(*number, std::numeric_limits<int>::max()));
    return true;
}

/// Reads how many findings of one rule are told into \a options; false, with an error told, when it is no number.
bool takeMostOfAKind(const Arguments &arguments, Options &options, Messages &messages)
{
    const QString text = QString::fromStdString(arguments.mostOfAKind);
    const std::optional<qint64> number = numberOf(text);
    if (!number || *number < 0) {
        messages.tell(rules::kNoFindingNumber, {text});
        return false;
    }
    options.mostOfAKind = *number;
    return true;
}

/// The words that a command takes beside its options.
struct Words {
    QString noun;
    qsizetype most; ///< how many at most; at least one is needed then
};
const Words kNoWords = {{}, 0};
constexpr qsizetype kAnyNumber = std::numeric_limits<qsizetype>::max();

/// A command, and what it needs.
struct Command {
    CLI::App *app;
    ExitStatus (*run)(const Options &options, Session &session);
    bool needsRoot;
    Words words = kNoWords;
};

void addRoots(CLI::App &command, Arguments &arguments)
{
    command.add_option("--chip", arguments.chip, "root description of the chip")->type_name("FILE");
    command.add_option("--soft", arguments.soft, "root description of the software")->type_name("FILE");
}

void addOutput(CLI::App &command, Arguments &arguments, const std::string &help)
{
    command.add_option("-o,--output", arguments.outputDirectory, help)->type_name("DIR")->required();
}

/// In which format a command tells its findings.
void addFormat(CLI::App &command, Arguments &arguments)
{
    command.add_option("--format", arguments.format, "how findings are told: text, json or sarif")
        ->type_name("FORMAT")
        ->check(CLI::IsMember({"text", "json", "sarif"}))
        ->group("Messages");
}

/// Whether a command shows where its findings are.
void addExplain(CLI::App &command, Arguments &arguments)
{
    const auto explain = [to = &arguments](bool isWanted) {
        return [to, isWanted](std::int64_t) { to->explains = isWanted; };
    };
    CLI::Option *wanted = command.add_flag_function(
        "--explain", explain(true), "show below each finding where it is and what to do, as on terminals");
    command.add_flag_function("--no-explain", explain(false), "tell one line a finding, as elsewhere")
        ->excludes(wanted)
        ->group("Messages");
    wanted->group("Messages");
}

void addThreads(CLI::App &command, Arguments &arguments)
{
    command
        .add_option("-j,--jobs", arguments.threads,
                    "threads that work, all processors if not given; the result is the same")
        ->type_name("N");
}

/// The file that checks what is written; \a help tells of it.
void addSelfCheck(CLI::App &command, Arguments &arguments, const std::string &help)
{
    command.add_flag("--self-check", arguments.selfCheck, help);
}

/// What is written beside the headers of the files. Where headers are not always asked for, \a directory does so.
void addExtraHeaders(CLI::App &command, Arguments &arguments, CLI::Option *directory = nullptr)
{
    for (CLI::Option *option : {
             command.add_flag("--types", arguments.types, "also write veldmap/types.h, the words that headers use"),
             command.add_flag("--accessors", arguments.accessors,
                              "also write functions that read and compose registers"),
             command.add_flag("--globals", arguments.globals, "also write globals.h, the global variables"),
         }) {
        if (directory)
            option->needs(directory);
    }
}

CLI::Option *addAccepted(CLI::App &command, Arguments &arguments)
{
    return command.add_flag("--accepted", arguments.accepted,
                            "write what VHDL refuses as comments, with the reason, so that packages are taken");
}

Command addCheck(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("check", "Load descriptions and report what is wrong with them");
    addRoots(*command, arguments);
    command->add_option("FILE", arguments.chip, "the same as --chip FILE")->type_name("")->excludes("--chip");
    addThreads(*command, arguments);
    addLintOptions(*command, arguments.lint);
    command->footer("@FILE stands for the options in that file, one a line.\n\n"
                    "Examples:\n"
                    "  veldmap check soc.xml\n"
                    "  veldmap check soc.xml -Wall --strict\n"
                    "  veldmap check --chip soc.xml --soft firmware.xml @lint.options\n"
                    "  veldmap check soc.xml --format=sarif > findings.sarif");
    return {command, check, true};
}

Command addHeaders(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("headers", "Write the C and assembly headers of descriptions");
    addRoots(*command, arguments);
    addOutput(*command, arguments, "directory for the headers, made if need be");
    addThreads(*command, arguments);
    command->add_flag("--skip-up-to-date", arguments.skipUpToDate,
                      "leave headers alone that are newer than all that was read for them");
    addSelfCheck(*command, arguments,
                 "write SOC_self_check.c too, which compiles when the headers say what the tree does");
    addExtraHeaders(*command, arguments);
    addOutputOptions(*command, arguments.output);
    addLintOptions(*command, arguments.lint);
    command->footer("With both roots the headers lie below DIR/chip and DIR/soft.\n\n"
                    "Examples:\n"
                    "  veldmap headers --chip soc.xml -o include --types --globals\n"
                    "  veldmap headers --chip soc.xml -o include --self-check\n"
                    "  veldmap headers --chip soc.xml --soft firmware.xml -o include --skip-up-to-date\n"
                    "  veldmap headers --chip hw/soc.xml -o include --base . --depfile soc.d");
    return {command, headers, true};
}

Command addVhdl(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("vhdl", "Write the VHDL packages of a chip");
    addRoots(*command, arguments);
    addOutput(*command, arguments, "directory for the packages, made if need be");
    addThreads(*command, arguments);
    addOutputOptions(*command, arguments.output);
    addAccepted(*command, arguments);
    addSelfCheck(*command, arguments, "write SOC_self_check.vhd too, which fails when a package differs from the tree");
    addLintOptions(*command, arguments.lint);
    command->footer("A package is written as its description says; lines that VHDL does not take are told.\n\n"
                    "Examples:\n"
                    "  veldmap vhdl --chip soc.xml -o rtl\n"
                    "  veldmap vhdl --chip soc.xml -o rtl --accepted --self-check");
    return {command, vhdl, true};
}

Command addDocs(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("docs", "Write a documentation site of descriptions");
    addRoots(*command, arguments);
    addOutput(*command, arguments, "directory for the site, made if need be");
    addThreads(*command, arguments);
    addOutputOptions(*command, arguments.output);
    addLintOptions(*command, arguments.lint);
    command->footer("Open DIR/index.html in a browser. With both roots there is a site in each of DIR/chip and "
                    "DIR/soft.\n\n"
                    "Example:\n"
                    "  veldmap docs --chip soc.xml -o site");
    return {command, docs, true};
}

Command addSite(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("site", "Write the reference manual of descriptions, a site with search");
    addRoots(*command, arguments);
    addOutput(*command, arguments, "directory for the site, made if need be");
    addThreads(*command, arguments);
    addOutputOptions(*command, arguments.output);
    command->add_flag("--single", arguments.single, "all on one page, manual.html, for printing");
    addLintOptions(*command, arguments.lint);
    command->footer("Open DIR/index.html in a browser. Both roots are shown in one site.\n\n"
                    "Examples:\n"
                    "  veldmap site --chip soc.xml -o manual\n"
                    "  veldmap site --chip soc.xml --soft firmware.xml -o manual --single");
    return {command, site, true};
}

Command addBuild(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("build", "Write headers, packages and documentation from one load");
    addRoots(*command, arguments);
    CLI::Option *headersOption =
        command->add_option("--headers", arguments.headersDirectory, "directory for C and assembly headers")
            ->type_name("DIR");
    addExtraHeaders(*command, arguments, headersOption);
    CLI::Option *packages =
        command->add_option("--vhdl", arguments.vhdlDirectory, "directory for VHDL packages")->type_name("DIR");
    command->add_option("--site", arguments.siteDirectory, "directory for the reference manual")->type_name("DIR");
    command->add_option("--docs", arguments.docsDirectory, "directory for the documentation site")->type_name("DIR");
    addAccepted(*command, arguments)->needs(packages);
    addSelfCheck(*command, arguments, "write files of assertions beside headers and packages too");
    addThreads(*command, arguments);
    addOutputOptions(*command, arguments.output);
    addLintOptions(*command, arguments.lint);
    command->footer("Example:\n"
                    "  veldmap build --chip soc.xml --headers include --vhdl rtl --site manual");
    return {command, build, true};
}

Command addTree(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("tree", "Print what was loaded");
    addRoots(*command, arguments);
    command->add_flag("--json", arguments.json, "as one JSON object, for programs");
    addMostOutput(*command, arguments.output);
    command->footer("Examples:\n"
                    "  veldmap tree --chip soc.xml\n"
                    "  veldmap tree --json --chip soc.xml | jq '.chip.instances[].path'");
    return {command, tree, true};
}

CLI::Option *addTargetWord(CLI::App &command, Arguments &arguments)
{
    return command
        .add_option("--target", arguments.targets,
                    "where values are: image:FILE@ADDRESS, gdb:HOST:PORT, mem:PATH, sim or exec:COMMAND; several are "
                    "one")
        ->type_name("TARGET")
        ->allow_extra_args(false);
}

/// The options that say where values are: a target, or an image of the target's memory with its address.
void addTarget(CLI::App &command, Arguments &arguments)
{
    CLI::Option *target = addTargetWord(command, arguments);
    command.add_option("--timeout", arguments.timeout, "how long the target may take for an answer, 2 if not given")
        ->type_name("SECONDS")
        ->needs(target);
    CLI::Option *image =
        command.add_option("--image", arguments.imageFile, "file with the bytes of the target's memory")
            ->type_name("FILE")
            ->excludes(target);
    CLI::Option *address = command.add_option("--at", arguments.imageAddress, "address of the first byte of the image")
                               ->type_name("ADDRESS")
                               ->needs(image);
    image->needs(address);
}

Command addShow(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("show", "Show what paths name: place, type, access, fields, values");
    addRoots(*command, arguments);
    addTarget(*command, arguments);
    CLI::Option *json = command->add_flag("--json", arguments.json, "as a JSON list with one object a path");
    command->add_flag("--recursive", arguments.recursive, "all that lies inside, not only the next level")
        ->excludes(json);
    addMostOutput(*command, arguments.output);
    command->footer("An address shows what lies there.\n\n"
                    "Examples:\n"
                    "  veldmap show --chip soc.xml '$UART0.ctrl' '$UART0.ctrl.speed'\n"
                    "  veldmap show --chip soc.xml 0x40000000\n"
                    "  veldmap show --chip soc.xml '$UART0' --image dump.bin --at 0x40000000\n"
                    "  veldmap show --chip soc.xml '$UART0.ctrl' --target gdb:localhost:1234");
    return {command, show, true, {u"path"_s, kAnyNumber}};
}

Command addFind(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("find", "Find elements by name, address, or a word of their comments");
    addRoots(*command, arguments);
    command->add_flag("--json", arguments.json, "as a JSON list with one object an element");
    addMostOutput(*command, arguments.output);
    command->footer("A line for each: path, address and type. '*' in a name stands for any letters.\n\n"
                    "Examples:\n"
                    "  veldmap find --chip soc.xml 'baud*'\n"
                    "  veldmap find --chip soc.xml 0x40000004\n"
                    "  veldmap find --chip soc.xml parity");
    return {command, find, true, {u"text"_s, 1}};
}

Command addExport(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("export", "Write the registers of descriptions in a format of other tools");
    addRoots(*command, arguments);
    std::vector<std::string> names;
    for (const ExportFormat &format : exportFormats())
        names.emplace_back(format.name.data(), static_cast<std::size_t>(format.name.size()));
    command->add_option("--format", arguments.exportFormat, "the format; --list tells which there are")
        ->type_name("FORMAT")
        ->check(CLI::IsMember(names));
    command->add_option("-o,--output", arguments.outputFile, "the file, which replaces an earlier one; - prints it")
        ->type_name("FILE")
        ->capture_default_str();
    command->add_flag("--list", arguments.list, "list the formats, one a line, and do nothing else");
    command
        ->add_option("--max-findings", arguments.mostOfAKind,
                     "how many of one kind are told of what the format can't say, 0 for all")
        ->type_name("N")
        ->capture_default_str()
        ->group("Messages");
    addThreads(*command, arguments);
    command->footer("What the format can't say is told with its place, and is no failure.\n\n"
                    "Examples:\n"
                    "  veldmap export --chip soc.xml --format svd -o soc.svd\n"
                    "  veldmap export --chip soc.xml --format csv > fields.csv\n"
                    "  veldmap export --chip soc.xml --format json | jq '.blocks[].registers[].path'\n"
                    "  veldmap export --list");
    return {command, exportMap, false};
}

Command addWrite(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("write", "Set registers, integers and fields of a target: PATH=VALUE");
    addRoots(*command, arguments);
    addTarget(*command, arguments);
    command->add_flag("--no-verify", arguments.skipsVerifying, "do not read back what was written to a target");
    command->add_flag("--force", arguments.force, "write what is not writable too");
    command->footer("A value is a number, for a field also the name of an option. A field is changed in its register,\n"
                    "in which set and clear fields become 0 first; they themselves take 1. Nothing is written unless\n"
                    "all makes sense; to an image, unless all could be. What a target takes is read back.\n\n"
                    "Examples:\n"
                    "  veldmap write --chip soc.xml '$UART0.ctrl.speed=3' --image dump.bin --at 0x40000000\n"
                    "  veldmap write --chip soc.xml '$UART0.ctrl.speed=fast' --target gdb:localhost:1234");
    return {command, write, true, {u"assignment PATH=VALUE"_s, kAnyNumber}};
}

Command addConsole(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("console", "Read and write registers of a live chip by name");
    addRoots(*command, arguments);
    addTargetWord(*command, arguments);
    command->add_option("-c,--command", arguments.lines, "run this line; may be given several times")
        ->type_name("LINE")
        ->allow_extra_args(false);
    command->add_option("FILE", arguments.source, "run the lines of this file; - is the standard input")->type_name("");
    command->add_flag("--keep-going", arguments.keepsGoing, "go on behind a line that fails");
    command->footer("On a terminal it asks for lines; 'help' there tells of them. Without, it reads them from the\n"
                    "standard input. A script ends with status 1 at the first line that fails.\n\n"
                    "Examples:\n"
                    "  veldmap console --chip soc.xml --target gdb:localhost:1234\n"
                    "  veldmap console --chip soc.xml --target sim -c 'UART0.ctrl.speed = fast' -c UART0.ctrl\n"
                    "  veldmap console --chip soc.xml --target image:dump.bin@0x40000000 bring-up.txt");
    return {command, console, true};
}

Command addRegs(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("regs", "Read registers of a target: path, address, value, fields");
    addRoots(*command, arguments);
    addTarget(*command, arguments);
    command->add_flag("--json", arguments.json, "as a JSON list with one object a register");
    command->footer("A line for each register or integer in what the paths name. One that can't be read shows '?'.\n\n"
                    "Examples:\n"
                    "  veldmap regs --chip soc.xml '$UART0' --target gdb:localhost:1234\n"
                    "  veldmap regs --chip soc.xml '$UART0' '$GPIO.out' --target sim\n"
                    "  veldmap regs --json --chip soc.xml '$UART0' --target mem:/dev/mem");
    return {command, regs, true, {u"path"_s, kAnyNumber}};
}

Command addComplete(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("complete", "List what may stand behind the last dot of a path");
    addRoots(*command, arguments);
    command->add_flag("--json", arguments.json, "as a JSON list");
    addMostOutput(*command, arguments.output);
    command->footer("One candidate a line: name, arguments, result and help, with tabs between them.\n"
                    "'veldmap complete --words WORD...' lists for shells what the last of the words of a command line\n"
                    "may become.\n\n"
                    "Example:\n"
                    "  veldmap complete --chip soc.xml '$UART0.'");
    return {command, complete, true, {u"text"_s, 1}};
}

Command addEval(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("eval", "Print the value of each EXPRESSION, one a line");
    addRoots(*command, arguments);
    command->add_flag("--json", arguments.json, "as a JSON list of types and values");
    command->footer("With a root, expressions see the variables of its first file.\n\n"
                    "Examples:\n"
                    "  veldmap eval '0x40000000+0x1000*3' 'exp2(10)-1'\n"
                    "  veldmap eval --chip soc.xml UART_NB_CHAN\n"
                    "  veldmap eval '-(2+3)'");
    return {command, eval, false, {u"expression"_s, kAnyNumber}};
}

Command addRules(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("rules", "List the rules of lint, for -W");
    command->add_flag("--json", arguments.json, "as a JSON list");
    command->footer("One rule a line: its ID, what it finds counts as, whether it is on, and its words.\n\n"
                    "Examples:\n"
                    "  veldmap rules\n"
                    "  veldmap rules --json");
    return {command, listRules, false};
}

Command addNew(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("new", "Write a small commented description to start from");
    command->add_option("FILE", arguments.destination, "the description, which must not be there yet; - prints it")
        ->type_name("")
        ->required();
    command->footer("Examples:\n"
                    "  veldmap new soc.xml\n"
                    "  veldmap new - | less");
    return {command, writeNew, false};
}

Command addImport(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("import", "Write a description of what a vendor's file says of a chip");
    command->add_option("FILE", arguments.source, "a CMSIS-SVD or IP-XACT file; - reads the standard input")
        ->type_name("")
        ->required();
    addOutput(*command, arguments, "directory for the description, made if need be");
    command->add_flag("--update", arguments.update, "keep comments and numbers that were added to an earlier import");
    command
        ->add_option("--max-messages", arguments.lint.most, "findings of a kind that are told, 1 if not given; 0: all")
        ->type_name("N");
    command->footer("DIR/soc.xml is the root, and DIR/IMPORT.md tells what was changed, approximated or left out.\n"
                    "Other commands take such a file too, as --chip FILE.\n\n"
                    "Examples:\n"
                    "  veldmap import chip.svd -o chip\n"
                    "  veldmap import chip-1.1.svd -o chip --update\n"
                    "  veldmap headers --chip chip.svd -o include");
    return {command, importFile, false};
}

Command addEncrypt(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("encrypt", "Write a description as an encrypted container");
    command->add_option("SOURCE", arguments.source, "a plain description")->type_name("")->required();
    command->add_option("DESTINATION", arguments.destination, "the container, which replaces an earlier file")
        ->type_name("")
        ->required();
    command->add_flag("--exact", arguments.exact, "add no digest, by which readers notice damage and another key");
    command->footer("Containers stand wherever plain descriptions do. Each file of a description is encrypted by "
                    "itself.\n\n"
                    "Example:\n"
                    "  veldmap encrypt uart.xml uart.xmd");
    return {command, encrypt, false};
}

bool isUnknownOption(const QString &word)
{
    return word.size() > 2 && word.startsWith("--"_L1) && word[2].isLetter();
}

/// Takes over the words that no option of \a command has taken. They are taken as they are; an option of CLI11 would
/// read [1,2] as two values, and -(2) as options.
bool takeWords(const Command &command, const std::vector<std::string> &words, Options &options, Messages &messages)
{
    for (const std::string &bytes : words) {
        const QString word = QString::fromStdString(bytes);
        if (options.words.size() == command.words.most || isUnknownOption(word)) {
            messages.tell(rules::kUnexpected, {word, QString::fromStdString(command.app->get_name())});
            return false;
        }
        options.words += word;
    }
    const bool isMissing = command.words.most > 0 && options.words.isEmpty();
    if (isMissing)
        messages.tell(rules::kNoWord, {command.words.noun});
    return !isMissing;
}

/// Makes \a messages write the format that \a options ask for. The findings are what check is asked for; those of the
/// others go where messages go, beside the results.
void startFormat(const Command &command, const Options &options, Messages &messages)
{
    std::FILE *stream = command.run == check ? stdout : stderr;
    if (options.format == "json"_L1)
        messages.setFormat(jsonOfFindings(), stream);
    else if (options.format == "sarif"_L1)
        messages.setFormat(sarifOfFindings(QStringLiteral(VELDMAP_VERSION), QDir::currentPath()), stream);
}

void tellUnknownCommand(const std::vector<Command> &commands, const QString &word, Messages &messages)
{
    NearestName nearest(word);
    for (const Command &command : commands)
        nearest.offer(QString::fromStdString(command.app->get_name()));
    if (nearest.name().isEmpty())
        messages.tell(rules::kUnknownCommand, {word});
    else
        messages.tell(rules::kUnknownCommandButNear, {word, nearest.name()});
}

/// Whether \a command tells what lint finds.
bool isLinting(const Command &command)
{
    constexpr std::array kLinting = {check, headers, vhdl, docs, site, build};
    return std::ranges::find(kLinting, command.run) != kLinting.end();
}

/// Whether the standard input can stand for the descriptions that \a options name; an error is told when not.
bool mayReadInput(const Command &command, const Options &options, Messages &messages)
{
    if (!options.readsInput())
        return true;
    const bool writes = isLinting(command) && command.run != check;
    if (writes)
        messages.tell(rules::kInputHasNoName);
    else if (options.chip == options.soft)
        messages.tell(rules::kOneInput);
    return !writes && options.chip != options.soft;
}

/// "help COMMAND" is "COMMAND --help"; false, with an error told, when there is no such command.
bool takeHelp(const std::vector<Command> &commands, std::vector<std::string> &words, Messages &messages)
{
    if (words.empty() || words.front() != "help")
        return true;
    if (words.size() == 1) {
        words = {"--help"};
        return true;
    }
    const bool isKnown =
        std::ranges::any_of(commands, [&](const Command &command) { return command.app->get_name() == words[1]; });
    if (!isKnown)
        tellUnknownCommand(commands, QString::fromStdString(words[1]), messages);
    words = {words[1], "--help"};
    return isKnown;
}

ExitStatus runCommand(const std::vector<Command> &commands, const Arguments &arguments,
                      const std::vector<std::string> &words, Session &session)
{
    Messages &messages = session.messages;
    for (const Command &command : commands) {
        if (!command.app->parsed())
            continue;
        Options options = optionsOf(arguments);
        if (!takeWords(command, words, options, messages) || !takeImage(arguments, options, messages) ||
            !takeTimeout(arguments, options, messages) || !takeThreads(arguments, options, messages) ||
            !takeMostOfAKind(arguments, options, messages) ||
            !takeLintOptions(arguments.lint, options.lint, messages) ||
            !takeOutputOptions(arguments.output, options.output, messages))
            return kWrongUsage;
        if (command.needsRoot && !options.hasRoot()) {
            messages.tell(rules::kNoRoot);
            return kWrongUsage;
        }
        if (!mayReadInput(command, options, messages))
            return kWrongUsage;
        startFormat(command, options, messages);
        const bool isExplained = arguments.explains.value_or(messages.isTerminal() && options.lint.isOn);
        if (options.lint.isOn && (isLinting(command) || isExplained || messages.hasFormat()))
            messages.showNotes();
        if (isExplained || (messages.hasFormat() && options.lint.isOn))
            messages.setExplanations(std::make_unique<Explanations>(widthOfTerminal()), isExplained);
        const ExitStatus status = command.run(options, session);
        return messages.finish() ? status : kFailed;
    }
    if (words.empty())
        messages.tell(rules::kNoCommand);
    else
        tellUnknownCommand(commands, QString::fromStdString(words.front()), messages);
    return kWrongUsage;
}

} // namespace

std::optional<quint32> addressOf(const QString &text)
{
    const std::optional<qint64> number = numberOf(text);
    if (!number || *number < 0 || *number > 0xFFFFFFFF)
        return {};
    return static_cast<quint32>(*number);
}

int runCommandLine(int argc, char **argv, Session &session)
{
    Arguments arguments;
    CLI::App app("From one description of a chip's registers and memory map, or of software data structures, to\n"
                 "everything that engineers need of it.",
                 "veldmap");
    app.require_subcommand(0, 1);
    app.fallthrough();
    app.allow_extras();
    app.set_version_flag("--version", VELDMAP_VERSION);
    CLI::Option *verbose = app.add_flag("-v,--verbose", arguments.verbose, "tell what is being loaded");
    app.add_flag("-q,--quiet", arguments.quiet, "tell errors only")->excludes(verbose);
    const std::vector<Command> commands = {
        addCheck(app, arguments),    //
        addHeaders(app, arguments),  //
        addVhdl(app, arguments),     //
        addDocs(app, arguments),     //
        addSite(app, arguments),     //
        addBuild(app, arguments),    //
        addTree(app, arguments),     //
        addShow(app, arguments),     //
        addFind(app, arguments),     //
        addRegs(app, arguments),     //
        addExport(app, arguments),   //
        addWrite(app, arguments),    //
        addConsole(app, arguments),  //
        addComplete(app, arguments), //
        addEval(app, arguments),     //
        addRules(app, arguments),    //
        addNew(app, arguments),      //
        addImport(app, arguments),   //
        addEncrypt(app, arguments),  //
    };
    for (const Command &command : commands) {
        if (command.run == listRules)
            continue;
        if (command.run != exportMap) // which has another format
            addFormat(*command.app, arguments);
        addExplain(*command.app, arguments);
    }
    app.footer("Examples:\n"
               "  veldmap check soc.xml\n"
               "  veldmap headers --chip soc.xml -o include\n"
               "  veldmap vhdl --chip soc.xml -o rtl\n"
               "  veldmap docs --chip soc.xml -o site\n"
               "  veldmap site --chip soc.xml -o manual\n"
               "  veldmap tree --chip soc.xml\n"
               "  veldmap show --chip soc.xml '$UART0.ctrl'\n"
               "  veldmap eval '0x10+0b11'\n\n"
               "'veldmap help COMMAND' tells more of a command. Numbers are decimal, 0x hexadecimal or 0b binary.\n"
               "The exit status is 0 when all was done, 1 when something failed, 2 for wrong usage.");
    std::vector<std::string> typed(argv + qMin(argc, 1), argv + argc);
    if (typed.size() > 1 && typed[0] == "complete" && typed[1] == "--words")
        return completeWords(app, {typed.begin() + 2, typed.end()}, session); // they need not make sense yet
    std::optional<std::vector<std::string>> given = expandOptionFiles(typed, session.messages);
    if (!given || !takeHelp(commands, *given, session.messages))
        return kWrongUsage;
    std::ranges::reverse(*given); // as CLI11 wants them
    try {
        app.parse(*std::move(given));
    } catch (const CLI::ParseError &end) {
        if (end.get_exit_code() != 0) {
            const std::vector<CLI::App *> parsed = app.get_subcommands();
            const QString command =
                parsed.empty() ? QString() : QString::fromStdString(parsed.front()->get_name()) + u' ';
            session.messages.tell(rules::kWrongOptions, {QString::fromUtf8(end.what()), command});
            return kWrongUsage;
        }
        // Help and version end the parsing too.
        errno = 0;
        if (app.exit(end) != 0)
            return kWrongUsage;
        if (std::cout.flush())
            return kDone;
        session.messages.tell(rules::kOutput, {systemText(errno)});
        return kFailed;
    }
    if (arguments.verbose || arguments.quiet)
        session.messages.setVerbosity(arguments.verbose ? Verbosity::Verbose : Verbosity::Quiet);
    return runCommand(commands, arguments, app.remaining(true), session);
}

} // namespace veldmap::cli
