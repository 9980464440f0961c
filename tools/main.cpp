// The command line of vxutil.

#include "commands.h"
#include "convert.h"
#include "open_image.h"
#include "picture_format.h"
#include "registry_files.h"
#include "report.h"

#include <vxsearchpath.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <functional>
#include <new>

namespace tool {

namespace {

const std::vector<std::string> kColourWords = {"auto", "always", "never"};  // as in ColourUse

constexpr char kGuard = '\x01';

// CLI11 takes "[a,b]" for a list and "{}" for an empty one. Here these are names of files and
// wildcards: a byte in front of them, taken off again by addText, keeps them whole.
std::vector<std::string> guardedArguments(int count, char **arguments) {
    std::vector<std::string> guarded;
    // CLI11 takes them from the back.
    for (int i = count - 1; i > 0; --i) {
        std::string text = arguments[i];
        if (text.starts_with('[') || text.starts_with('{') || text.starts_with('%')) {
            text.insert(text.begin(), kGuard);
        }
        guarded.push_back(std::move(text));
    }
    return guarded;
}

std::string unguarded(const std::string &text) {
    return text.starts_with(kGuard) ? text.substr(1) : text;
}

template <typename Value>
CLI::Option *addText(CLI::App *app, const char *name, Value &value, const char *what) {
    return app->add_option(name, value, what)->transform(unguarded);
}

// A file or directory. Its name is never the empty text, as an unset variable of a shell gives it.
template <typename Value>
CLI::Option *addFile(CLI::App *app, const char *name, Value &value, const char *what) {
    return addText(app, name, value, what)->required()->check([](const std::string &text) {
        return std::string(text.empty() ? "an empty name" : "");
    });
}

// One of some words, which `type` shows.
CLI::Option *addChoice(CLI::App *app, const char *name, std::string &value,
                       const std::vector<std::string> &words, const char *type, const char *what) {
    return app->add_option(name, value, what)
        ->check(CLI::IsMember(words).description(""))
        ->type_name(type);
}

template <typename Names>
int indexOf(const Names &names, const std::string &name) {
    return static_cast<int>(std::find(names.begin(), names.end(), name) - names.begin());
}

// What the command line asks for, with the words as they stand there.
struct Request {
    char **arguments = nullptr;  // of the program
    std::function<int()> run;
    std::string category, level;
    std::string directory, wildcard, input, output, name, pattern, namesFrom;
    std::vector<std::string> names;
    std::optional<unsigned> place;
    unsigned position = 0;
    int gridSize = 0;
    bool json = false, all = false, explain = false;
    bool runLength = false, verbatim = false;
    bool atLength = false;
    BatchOptions batch;
    CompareOptions compare;
    ConvertOptions convert;
    bool nulSeparated = false, listFiles = false;

    int categoryOr(int otherwise) const {
        return category.empty() ? otherwise : indexOf(kCategoryNames, category);
    }

    int levelOr(int otherwise) const {
        return level.empty() ? otherwise : indexOf(kLevelNames, level);
    }

    std::vector<int> listedCategories() const {
        if (!category.empty()) return {categoryOr(0)};
        return {VX_CATEGORY_TEXTURES, VX_CATEGORY_PHOTOMETRIC_WEBS};
    }

    char separator() const { return nulSeparated ? '\0' : '\n'; }

    void refuseJson() const {
        if (json) throw CLI::ValidationError("--json", "is for listing only");
    }

    // The list to edit, after a wait for those who edit now.
    ListId edited() const {
        const int level_ = levelOr(VX_LEVEL_USER);
        refuseJson();
        if (level_ != VX_LEVEL_USER && level_ != VX_LEVEL_MACHINE) {
            throw CLI::ValidationError("--level",
                                       "only the user's and the machine's can be edited");
        }
        beginEdit(level_, arguments);
        return {categoryOr(VX_CATEGORY_TEXTURES), level_};
    }
};

void addCategory(CLI::App *app, Request &request, const char *what) {
    addChoice(app, "--category", request.category, {"texture", "web"}, "texture|web", what);
}

// The function that a subcommand runs. A command inside another is asked first.
void choose(CLI::App *app, Request &request, std::function<int()> run) {
    app->callback([&request, run = std::move(run)] {
        if (!request.run) request.run = run;
    });
}

// The subcommands of paths that work on the list as one.
void addPathLists(CLI::App *paths, Request &request) {
    CLI::App *check =
        paths->add_subcommand("check", "Report directories that are missing")->fallthrough();
    check->footer(
        "Examples:\n"
        "  vxutil paths check\n"
        "  vxutil paths check --category web --level machine");
    choose(check, request, [&] {
        request.refuseJson();
        return checkPaths(request.listedCategories(), request.levelOr(VX_LEVEL_MERGED));
    });

    CLI::App *toFile = paths->add_subcommand("export", "Print a list for import")->fallthrough();
    toFile->add_flag("-0,--null", request.nulSeparated,
                     "End directories in NUL, not in a line break");
    toFile->footer(
        "Examples:\n"
        "  vxutil paths export > maps.txt\n"
        "  vxutil paths export --category web --level machine > lamps.txt");
    choose(toFile, request, [&] {
        request.refuseJson();
        return exportPaths(
            {request.categoryOr(VX_CATEGORY_TEXTURES), request.levelOr(VX_LEVEL_USER)},
            request.separator());
    });

    CLI::App *fromFile =
        paths->add_subcommand("import", "Replace a list by the lines of a file")->fallthrough();
    addFile(fromFile, "file", request.input, "What export has printed; -: standard input");
    fromFile->add_flag("-0,--null", request.nulSeparated,
                       "Directories end in NUL, not in a line break");
    fromFile->footer(
        "Examples:\n"
        "  vxutil paths import maps.txt\n"
        "  ssh host vxutil paths export -0 | vxutil paths import - -0");
    choose(fromFile, request,
           [&] { return importPaths(request.edited(), request.input, request.separator()); });
}

void addPaths(CLI::App &app, Request &request) {
    CLI::App *paths = app.add_subcommand("paths", "List or edit the search paths");
    paths->require_subcommand(0, 1);
    addCategory(paths, request, "Both are listed without it; textures are edited");
    addChoice(paths, "--level", request.level, {kLevelNames.begin(), kLevelNames.end()},
              "merged|user|machine|environment", "Default: merged to list, user to edit");
    paths->add_flag("--json", request.json, "List as JSON");
    choose(paths, request, [&] {
        return listPaths(request.listedCategories(), request.levelOr(VX_LEVEL_MERGED),
                         request.json);
    });

    CLI::App *add = paths->add_subcommand("add", "Add directories")->fallthrough();
    addFile(add, "directory", request.names, "A relative one is made absolute");
    add->add_option("--at", request.place, "Position of the first, from 0; default: the end");
    add->footer(
        "Examples:\n"
        "  vxutil paths add /srv/maps /srv/skies --at 0\n"
        "  vxutil paths add /srv/lamps --category web --level machine");
    choose(add, request, [&] { return addPaths(request.edited(), request.names, request.place); });

    CLI::App *remove = paths->add_subcommand("remove", "Remove directories")->fallthrough();
    addFile(remove, "directory", request.names, "Directories or their positions");
    remove->footer(
        "Examples:\n"
        "  vxutil paths remove /srv/maps\n"
        "  vxutil paths remove 2 --category web --level machine");
    choose(remove, request, [&] { return removePaths(request.edited(), request.names); });

    CLI::App *move = paths->add_subcommand("move", "Move a directory")->fallthrough();
    addFile(move, "directory", request.directory, "Directory or its position");
    move->add_option("position", request.position, "Where it goes, from 0")->required();
    move->footer(
        "Examples:\n"
        "  vxutil paths move /srv/maps 0\n"
        "  vxutil paths move 2 0 --category web --level machine");
    choose(move, request,
           [&] { return movePath(request.edited(), request.directory, request.position); });

    addPathLists(paths, request);

    if (holdsEditLock()) {  // which starts this one, and nobody else does
        CLI::App *confirm = paths->add_subcommand("confirm")->fallthrough()->group("");
        addText(confirm, "directory", request.names, "The list as it is wanted");
        choose(confirm, request, [&] { return confirmPaths(request.edited(), request.names); });
    }

    paths->footer(
        "Examples:\n"
        "  vxutil paths --category texture\n"
        "  vxutil paths add /srv/maps --at 0\n"
        "  vxutil paths --level machine --category web remove /srv/old-lamps\n"
        "  vxutil paths move /srv/maps 2");
}

// An option that goes with few others.
void refuseOthers(const CLI::App &app, const std::vector<std::string> &allowed) {
    for (const CLI::Option *option : app.get_options()) {
        const std::string name = option->get_name();
        if (option->count() != 0 &&
            std::find(allowed.begin(), allowed.end(), name) == allowed.end()) {
            throw CLI::ExcludesError(allowed.front(), name);
        }
    }
}

void addFind(CLI::App &app, Request &request) {
    CLI::App *find = app.add_subcommand("find", "Say which directory holds a file");
    addFile(find, "name", request.names, "Names as a scene gives them; with * ? [a-z] <UDIM> ####")
        ->required(false);
    addText(find, "--files-from", request.namesFrom,
            "Names from the lines of a file; -: standard input")
        ->type_name("FILE");
    find->add_flag("-0,--null", request.nulSeparated,
                   "These names end in NUL, not in a line break");
    addCategory(find, request, "Default: texture");
    find->add_flag("--all", request.all, "Every candidate in search order, and what is there");
    find->add_flag("--explain", request.explain, "Why candidates were passed over");
    find->add_flag("--json", request.json, "One JSON object per name and line");
    find->footer(
        "Examples:\n"
        "  vxutil find wood.sgi\n"
        "  vxutil find 'floor/oak.<UDIM>.sgi'\n"
        "  grep -o '[^\"]*[.]sgi' hall.scene | vxutil find --files-from -\n"
        "  vxutil find --all --explain floor/oak.sgi\n"
        "  vxutil find --category web spot.ies\n"
        "  vxutil find --list");
    find->add_flag("--list", request.listFiles,
                   "All files along the path, and which of them hide others");
    choose(find, request, [&request, find] {
        if (request.listFiles) {
            refuseOthers(*find, {"--list", "--json", "--category", "--color"});
            return tool::listFiles(request.categoryOr(VX_CATEGORY_TEXTURES), request.json);
        }
        if (request.names.empty() && request.namesFrom.empty()) throw CLI::RequiredError("name");
        return findFiles({request.names, request.categoryOr(VX_CATEGORY_TEXTURES), request.all,
                          request.explain, request.namesFrom, request.nulSeparated, request.json});
    });
}

// Options of the commands that work on many files.
void addBatch(CLI::App *app, BatchOptions &batch,
              const char *what = "Image files, or folders with -r") {
    addFile(app, "file", batch.inputs.names, what)->required(false);
    app->add_flag("-r,--recursive", batch.inputs.recursive,
                  "Files with the extension of an image, in folders and theirs");
    addText(app, "--files-from", batch.inputs.list,
            "Names from the lines of a file; -: standard input")
        ->type_name("FILE");
    app->add_flag("-0,--null", batch.inputs.nulSeparated,
                  "These names end in NUL, not in a line break");
    app->add_option("-j,--jobs", batch.jobs, "Files to work on at once; default: one per processor")
        ->check(CLI::Range(1, kMaxJobs).description(""))
        ->type_name("N");
    app->add_flag("-q,--quiet", batch.quiet, "Faults only");
    app->add_flag("--json", batch.json, "One JSON object per file and line");
}

const BatchOptions &withInputs(const BatchOptions &batch) {
    if (batch.inputs.names.empty() && batch.inputs.list.empty()) throw CLI::RequiredError("file");
    return batch;
}

int convert(const Request &request) {
    const ConvertOptions &options = request.convert;
    const InputOptions &inputs = options.batch.inputs;
    const bool several = inputs.recursive || !inputs.list.empty() || options.batch.json;
    if (options.folder.empty() && (several || inputs.names.size() != 2)) {
        throw CLI::ValidationError("convert", "without -o takes two names, of input and output");
    }
    withInputs(options.batch);
    return convertPictures(options);
}

void addStorage(CLI::App *app, Request &request) {
    ConvertOptions &options = request.convert;
    CLI::Option *runLength =
        app->add_flag("--rle", request.runLength, "Run-length rows; default: the smaller storage");
    app->add_flag("--verbatim", request.verbatim, "Verbatim rows")->excludes(runLength);
    app->add_flag("--host-order", options.hostOrder,
                  "Byte order of this machine, which other programs may not read");
    addText(app, "--name", options.name, "Name in the file, at most 79 bytes");
}

void addConvert(CLI::App *image, Request &request) {
    ConvertOptions &options = request.convert;
    CLI::App *app =
        image->add_subcommand("convert", "Convert between image files and other formats");
    addBatch(app, options.batch, "Input and output; with -o inputs, or folders with -r");
    addFile(app, "-o", options.folder, "Folder for the outputs, in folders as the inputs are")
        ->required(false)
        ->type_name("FOLDER");
    addText(app, "--to", options.format,
            "Extension of the outputs; default: png, and sgi for those of other formats")
        ->check([](const std::string &extension) {
            const bool known = extension == "sgi" || isForeign(formatOfName("x." + extension));
            return known ? std::string() : "an extension of which no files can be written";
        })
        ->type_name("EXTENSION");
    app->add_flag("--always", options.always, "Even if the output is newer than the input");
    app->add_option("--depth", options.depth, "Bits of an element; default: as they are")
        ->check(CLI::IsMember({8, 16}).description(""))
        ->type_name("8|16");
    app->add_flag("--flip", options.flipped, "Upside down");
    app->add_option("--planes", options.planes, "Planes to take, from 0, such as 2,1,0")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("LIST");
    addStorage(app, request);
    app->footer(
        "Examples:\n"
        "  vxutil image convert oak.png oak.sgi --name \"oak, planed\"\n"
        "  vxutil image convert oak.sgi oak.png --depth 8 --planes 0\n"
        "  vxutil image convert -r textures -o previews");
    choose(app, request, [&request] {
        if (request.runLength) request.convert.storage = Storage::kRunLength;
        if (request.verbatim) request.convert.storage = Storage::kVerbatim;
        return convert(request);
    });
}

void addCompare(CLI::App *image, Request &request) {
    CompareOptions &options = request.compare;
    CLI::App *compare = image->add_subcommand("compare", "Compare two pictures");
    addFile(compare, "first", options.first, "File of any format");
    addFile(compare, "second", options.second, "One of the same size");
    compare
        ->add_option("--fail", options.failure, "Larger differences fail, of 0 to 1; default: 1e-6")
        ->type_name("D");
    compare
        ->add_option("--failpercent", options.failingPercentage,
                     "Elements in a hundred that may fail; default: 0")
        ->type_name("P");
    compare->add_option("--hardfail", options.hardFailure, "A single larger difference is enough")
        ->type_name("D");
    addFile(compare, "--picture", options.picture, "Picture of the differences")
        ->required(false)
        ->type_name("FILE");
    compare->add_flag("--json", options.json, "A JSON object");
    compare->footer(
        "Examples:\n"
        "  vxutil image compare oak.sgi oak.png\n"
        "  vxutil image compare a.sgi b.sgi --fail 0.01 --failpercent 1 --picture difference.png");
    choose(compare, request, [&] { return compareImages(request.compare); });
}

void addImage(CLI::App &app, Request &request) {
    CLI::App *image = app.add_subcommand("image", "Look at, check or convert image files");
    image->require_subcommand(1);
    CLI::App *info = image->add_subcommand("info", "Show what the header says");
    addBatch(info, request.batch);
    info->add_flag("-l,--long", request.atLength, "All of the header, in several lines");
    info->footer(
        "Examples:\n"
        "  vxutil image info --long oak.sgi\n"
        "  vxutil image info -r textures --json");
    choose(info, request,
           [&] { return describeImages(withInputs(request.batch), request.atLength); });
    CLI::App *check = image->add_subcommand("check", "Read every row and name the damaged ones");
    addBatch(check, request.batch);
    check->footer(
        "Examples:\n"
        "  vxutil image check textures/*.sgi\n"
        "  vxutil image check -r textures -q\n"
        "  find textures -name '*.sgi' -print0 | vxutil image check --files-from - -0");
    choose(check, request, [&] { return checkImages(withInputs(request.batch)); });
    CLI::App *stats = image->add_subcommand("stats", "Show what the elements are, plane by plane");
    addBatch(stats, request.batch);
    addFile(stats, "--svg", request.output, "Draw the histograms of one file")
        ->required(false)
        ->type_name("FILE");
    stats->footer(
        "Examples:\n"
        "  vxutil image stats oak.sgi --svg oak.svg\n"
        "  vxutil image stats -r textures --json");
    choose(stats, request,
           [&] { return measureImages(withInputs(request.batch), request.output); });
    addCompare(image, request);
    addConvert(image, request);
    image->footer(
        "Examples:\n"
        "  vxutil image info oak.sgi\n"
        "  vxutil image check textures/*.sgi\n"
        "  vxutil image convert oak.png oak.sgi");
}

void addMatch(CLI::App &app, Request &request) {
    CLI::App *match = app.add_subcommand("match", "Print the names that a wildcard matches");
    addFile(match, "wildcard", request.wildcard, "With * ? [a-z] [~a-z] and \\");
    addText(match, "name", request.names, "Without any, the lines of standard input");
    match->footer(
        "Examples:\n"
        "  vxutil match '*.sgi' oak.sgi oak.png\n"
        "  ls textures | vxutil match 'oak[0-9]*'");
    choose(match, request, [&] { return matchNames(request.wildcard, request.names); });
}

void addSamples(CLI::App &app, Request &request) {
    CLI::App *samples = app.add_subcommand("samples", "Draw the 67 sample sets");
    addChoice(samples, "--pattern", request.pattern, {"disk", "square"}, "disk|square",
              "Pattern of the sets")
        ->required();
    samples->add_option("--grid", request.gridSize, "Samples along a side of the grid, 1 to 64")
        ->check(CLI::Range(1, 64).description(""))
        ->type_name("N")
        ->required();
    addFile(samples, "-o", request.output, "SVG file to write")->type_name("FILE");
    samples->footer("Example:\n  vxutil samples --pattern disk --grid 4 -o disk.svg");
    choose(samples, request, [&] {
        return drawSamples(request.pattern == "square", request.gridSize, request.output);
    });
}

// For each command, so that it can be anywhere on the command line.
void addColour(CLI::App *app) {
    app->add_option_function<std::string>(
           "--color",
           [](const std::string &word) {
               setColourUse(static_cast<ColourUse>(indexOf(kColourWords, word)));
           },
           "Colours in the output; default: auto")
        ->check(CLI::IsMember(kColourWords).description(""))
        ->type_name("auto|always|never");
    for (CLI::App *command : app->get_subcommands({}))
        addColour(command);
}

// The first line only: CLI11 may have more to say. Where it misses a subcommand, it has passed over
// the word in its place.
int refuse(const CLI::App &app, const CLI::Error &error) {
    std::string what = error.what();
    what.resize(std::min(what.find('\n'), what.size()));
    std::vector<std::string> left = app.remaining(true);
    for (std::string &word : left)
        word = unguarded(word);
    const auto option = std::find_if(left.begin(), left.end(),
                                     [](const std::string &word) { return word.starts_with('-'); });
    if (option != left.end()) {
        what = "unknown option " + *option + "; a file of this name is ./" + *option;
    } else if (dynamic_cast<const CLI::ExtrasError *>(&error) != nullptr) {
        what = "unexpected:";
        for (const std::string &word : left)
            what += ' ' + word;
    }
    if (what == "A subcommand is required" && !left.empty())
        what += ", which " + left.front() + " is not";
    printError("command line", what + " (see --help)");
    return kUsage;
}

int run(int count, char **arguments) {
    CLI::App app("Looks after the search paths and the image files of scenes.", "vxutil");
    app.set_version_flag("--version", "vxutil " VX_TOOL_VERSION);
    app.require_subcommand(1);
    Request request;
    request.arguments = arguments;
    addPaths(app, request);
    addFind(app, request);
    addImage(app, request);
    addMatch(app, request);
    addSamples(app, request);
    addColour(&app);
    app.footer(
        "Examples:\n"
        "  vxutil paths add /srv/maps\n"
        "  vxutil find --explain wood.sgi\n"
        "  vxutil image check textures/*.sgi\n"
        "  vxutil image convert oak.png oak.sgi\n"
        "  vxutil samples --pattern disk --grid 4 -o disk.svg\n"
        "Exit code: 0 done, 1 not found, damaged or not to be done, 2 a wrong command line.\n"
        "Each subcommand has a --help of its own.");
    try {
        app.parse(guardedArguments(count, arguments));
        return request.run();
    } catch (const CLI::Error &error) {
        return error.get_exit_code() == 0 ? app.exit(error) : refuse(app, error);
    }
}

int runAndReport(int count, char **arguments) {
    int code = kFailed;
    try {
        code = run(count, arguments);
    } catch (const Error &error) {
        printError(error.subject(), error.what());
    } catch (const std::bad_alloc &) {
        printError("memory", "there is not enough of it");
    } catch (const std::exception &error) {
        printError("error", error.what());
    }
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return code;
    printError("standard output", "could not be written");
    return kFailed;
}

}  // namespace

}  // namespace tool

int main(int count, char **arguments) {
    std::setlocale(LC_CTYPE, "");  // names are in the code page of whoever types them
    // A file that grows past the limit of its user is an error to report, not an end.
    std::signal(SIGXFSZ, SIG_IGN);
    tool::collectImageMessages();
    const int code = tool::runAndReport(count, arguments);
    tool::disableRegistryWrites();  // an edit has written them by now
    return code;
}
