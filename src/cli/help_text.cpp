#include "cli/help_text.h"

#include "commands/options.h"

#include <string_view>

namespace fernlow {

namespace {

constexpr std::string_view upToDefaultTimeout = R"(fernlow — drive Fernlow from the command line.

USAGE
  fernlow <command> [options]

COMMANDS
  status                     What Fernlow is doing, and the current log cursor.
  projects                   Every project and framework.
  schema                     The whole API, with the notes below at more length.

  process <path>...          Compile files, as though they had just been saved.
  wait                       Wait until nothing is happening.
  log                        Read the log from a cursor.

  build [<path>] [--clean]   Build a whole project. Rare — see below.
  optimize <image>...        Optimise images in place.
  check <file>...            Check syntax. Javascript only — see below.
  packages <action> [<pkg>…] install, forceInstall, uninstall, update or prune.
  preview                    Open the preview address in a browser.
  refresh [<path>] [--all]   Re-read projects from disk.

  add <path> [--framework]   Add a folder as a project.
  remove <path>              Remove a project.
  enable <path>              Switch a project on (and refresh it).
  disable <path>             Switch a project off; Fernlow stops watching it.
  watch pause | resume       Stop or resume watching every project.

  groups                     Every sidebar group, and what is in each.
  groups add <name>          Make a group.
  groups remove <name>       Delete it; its projects go back to Projects.
  groups rename <name> <to>  Rename it.
  move <path> --group <name> Move a project into a group. Omit --group for Projects.
  rename <path> --name <to>  Change what Fernlow calls a project, not the folder.

  settings [<path>]                    Every setting a project holds.
  settings set <key>=<value>...        Change settings. Whole or nothing.
  settings schema                      What settings exist, and what changing each one does.
  settings apply-output-paths          Recalculate output paths for existing files.

  defaults                             The settings a project added later will start with.
  defaults set <key>=<value>...        Change them. Affects new projects only.
  defaults schema                      Which of those settings exist.

  files [<path>]                       Every file Fernlow is watching in a project.
  files settings <file>                One file's own settings.
  files set <file> <key>=<value>...    Change one file. Whole or nothing.
  files schema <file>                  What settings that file has.
  files skip <folder>...               Stop indexing these folders. Not the same as ignoring — see below.
  files unskip <folder>...             Index them again.

  collections [<path>]                 Hooks, build steps, WebP presets, custom extensions.
  collections add --kind <name>        Make a row. A build step also needs --type.
  collections remove --kind <name>     Delete a row, by --id.
  collections move --kind buildSteps   Move a row to --position. Build steps only.
  collections set --kind <name>        Change a row, by --id. Whole or nothing.
  collections schema                   What a row of each kind holds.

OPTIONS
  --json                     Print the reply as JSON. The default when output is not a terminal.
  --no-wait                  Return as soon as the work is submitted.
  --timeout <seconds>        How long to wait. Default )";

constexpr std::string_view upToDefaultSettle = R"(.
  --settle <milliseconds>    Pause before deciding nothing is happening. Default )";

constexpr std::string_view afterDefaultSettle = R"(.
  --since <cursor>           Report only what happened after this log cursor.
  --project <path>           Restrict to one project.
  --errors-only              Only errors.
  --exactly                  With 'process': compile precisely this file. Rarely right — see below.
  --socket <path>            Talk to a socket other than the usual one.
  --no-launch                Do not start Fernlow if it is not running.
  --language <name>          With 'settings' or 'defaults': which language. Omit for project-wide.
  --extension <ext>          With 'settings': which user-defined language.
  --path <path>              With 'settings set': which project. Defaults to this directory.
  --values <json>            With 'settings set' or 'defaults set': an object, for lists or explicit types.
  --action <name>            With 'files': compile, ignore or copy. Filters a listing; sets one file.
  --output-folder <path>     With 'files set': write this file's output into this folder.
  --output-name <name>       With 'files set': what to call the output. Needs --output-folder.
  --folders                  With 'files': include folders, which are left out by default.
  --shadow-items             With 'files': include files imported from outside the project.
  --limit <n> --offset <n>   With 'files': read a large project a page at a time.
  --clean                    With 'build': empty the Build Folder first, this once.
  --install <lists>          With 'packages': which lists to install from, comma-separated.
  --save-to <lists>          With 'packages': which lists to record in. Empty for none.
  --exact / --no-exact       With 'packages': record the exact version, or a range.
  --package-lock             With 'packages': write package-lock.json. --no-package-lock for not.
  --raise-limits             With 'packages update': allow a breaking version.
  --address <name>           With 'preview': preferred, bonjour, lan, loopback or localhost.
  --browser <bundleID>       With 'preview': e.g. com.apple.Safari. Omit for Fernlow's choice.
  --page <path>              With 'preview': a path below the preview root.
  --group <name>             With 'move': which group. Omit for the permanent Projects group.
  --name <text>              With 'rename', or with a 'groups' subcommand.
  --kind <name>              With 'collections': hooks, buildSteps, webpPresets or userLanguages.
  --id <id>                  With 'collections': which row, as the listing reports it.
  --type <name>              With 'collections add --kind buildSteps': processItems,
                             processRemainingItems or runScript.
  --position <n>             With 'collections move': where to put it, counting from zero.

EXIT CODES
  0  finished, nothing failed        3  Fernlow is not running
  1  finished, something failed      4  the wait expired
  2  bad arguments                   5  understood and refused

WORTH KNOWING
  A source folder and an output folder, and you write only in the source folder. NEVER edit
  anything in the output folder: it is generated, and the next save or build overwrites or
  deletes it — a build empties the folder first. If the output is wrong, fix the source. The
  Preview Server serves the output folder, so a browser loads the compiled result. As Fernlow
  ships, a project you create keeps its sources in "src" and its output in "build", mirroring
  src's folder structure.

  READ A PROJECT'S SETTINGS BEFORE YOU TOUCH IT, and never assume that layout. 'settings' gives
  you buildFolderActive, buildFolderName and sourceFolderName; 'files' says where each file's
  output actually goes. A project that existed before you arrived may be laid out any way at all,
  including with no build folder, so that output sits beside its source. The user may also have
  changed the defaults a new project starts from — 'defaults' is what those currently are — and a
  per-file choice can make one file behave unlike every other file of its kind.

  A project you have just created has an empty output folder, so 'build' it once — and 'wait' —
  before you 'preview' anything for someone. Opening a preview first shows an error page saying
  there is nothing to serve, which looks like a broken site rather than an unbuilt one.

  Groups are the sidebar's arrangement and have nothing to do with compiling. A group is named
  rather than numbered, so 'groups add' refuses a name already in use and the others refuse a
  name two groups share — Fernlow lets a person make two of the same name, and guessing which
  was meant would eventually delete the wrong one. Only groups you made can be changed;
  Projects and Frameworks are Fernlow's own, and frameworks cannot be moved. Deleting a group
  deletes no projects. 'rename' changes what Fernlow calls a project, never the folder on disk.

  Skipping a folder is not ignoring it. An ignored folder is indexed and then left alone; a
  skipped one is never indexed, so nothing in it is in the project, watched, or compilable —
  which is what keeps a project with a large vendor folder quick. Use 'files skip', not
  'settings set skippedFoldersString': the list only takes effect on a re-index, and the
  command does the settle, write, export and refresh in the order that makes it stick.

  Editing a file on disk is enough. While a project is switched on Fernlow watches it, so writing
  a file compiles it. Use 'process' to ask explicitly, and 'wait' to find out when it is done.

  Building is rare. Files are normally compiled one at a time as they are saved. Build only when
  many files are out of date, or the build folder has to be made afresh.

  Expect more files to be compiled than you asked for. Fernlow works out what has to be rebuilt,
  so saving one file can recompile dozens — and the file you name is often not the file compiled,
  because a partial means its parent is rebuilt. Compare requestedPaths with compiledPaths. This
  is correct behaviour, not a fault, and '--exactly' is not the way to make it stop.

  Do not work out dependencies yourself. The one exception is imports that cannot be resolved from
  the path in the import statement alone, because resolving them takes execution. There, name the
  files and pass '--exactly'.

  BEFORE changing many files at once — switching a git branch, or anything else that rewrites
  large parts of a folder — either 'fernlow disable <path>' or 'fernlow watch pause'. Doing it
  while Fernlow is watching can corrupt the project. Afterwards refresh, then process or build.
  Switching a project back on refreshes it for you.

  Switch it back on EVEN IF THE WORK IN BETWEEN FAILED. A project left disabled, or a watcher
  left paused, is not obvious from the interface, and the next file the person saves silently
  does not compile — which they discover much later, and not as your doing.

  You may submit work while other files are compiling, in the same project or another. Only a
  build of that same project, or Fernlow re-reading projects from disk, will hold a request up.

  Changing a compiling option — minification, whether Autoprefixer runs — is copied onto every
  existing file of that language straight away. Changing an output action or output path rule is
  NOT: it governs files Fernlow meets later, and files already indexed keep the paths they have.
  The reply lists those languages under outputPathsStale. Run 'settings apply-output-paths' to
  bring them into line, remembering it overwrites per-file choices. Ask 'settings schema' which
  kind a setting is.

  'defaults' is a tier above all of that: what a project is given when it is added. Changing a
  default never touches a project that already exists, so nothing propagates and nothing is left
  stale. To change a project you have, use 'settings'.

  'files' is the tier below: one file's own copy of its language's options, plus what becomes of
  it. Set a partial to Ignore, or send one file's output somewhere of its own, with 'files set'.
  Both mark the choice as deliberate, which is what stops the next index recalculating it — and
  'settings apply-output-paths' is then the one thing that will undo it.

  Imports are lines in files, not settings. Fernlow reads a file's own import statements — @import in
  Sass, Less and Stylus, <!-- @import --> in Weft, require and import in Javascript and Typescript —
  and builds the dependency graph from them. To add a dependency, write the statement in the file.
  Javascript and CoffeeScript also accept @fernlow-prepend "other.js" and @fernlow-append "last.js"
  in a comment at the top, which concatenate those files before and after this one. Linking two
  files by dragging one onto the other is long deprecated and is not exposed here.

  'check' is Javascript only. Fernlow's syntax checkers are wired to Javascript, and a path of any
  other kind is refused rather than quietly passed. For every other language compiling IS the
  check: process the file and read the problems out of the reply.

  TypeScript is strict unless you say otherwise. Fernlow ships TypeScript 7, which turns the
  strict family on by default, so tsNoImplicitAny, tsNoImplicitThis, tsStrictNullChecks,
  tsStrictFunctionTypes, tsStrictBindCallApply, tsStrictPropertyInitialization and
  tsUseUnknownInCatchVariables all start true in a new project. Fernlow passes each one's value
  out loud, so setting one false really does switch that check off.

  Read tsConfigFileHandlingType before changing any other TypeScript setting. Set to 1, the
  project's own tsconfig.json decides everything and every other TypeScript setting is ignored —
  your write will succeed and change nothing you can observe.

  Writing a tsconfig.json is often the better approach, and is fully supported. Set
  tsConfigFileHandlingType=1 and Fernlow passes the compiler nothing but '-p' and that file, so
  everything TypeScript understands is available — paths, references, include, exclude, lib, and
  the options Fernlow does not expose — written in the language's own format and committable
  alongside the code. Prefer it when a project needs an option 'settings schema' does not list, or
  when the configuration should be shared with whoever else works on the repository.

  Two consequences to expect. Per-file TypeScript settings stop applying, because one file decides
  for every file: 'files settings' still reports each file's stored moduleType and target, and none
  of them are used. And '-p' is a whole-project compile, so saving one .ts file emits every .ts
  file the config includes — the work report will be far larger than the file you touched. At 0,
  Fernlow's own settings decide and any tsconfig.json, in the project or any folder above it, is
  ignored outright.

  moduleResolutionType 5 is Automatic, and is the default. Fernlow passes no resolution at all and
  lets the compiler infer one from the module type, which is the only pairing certain to be legal.
  An explicit resolution can be refused: bundler is rejected for the node16, node18, node20 and
  nodenext module types, and node16/nodenext resolution is rejected for every other module type.

  tsTypesString is a comma list that starts as "*", which keeps every @types package loading the
  way it did before TypeScript 7. Empty it and no ambient types resolve at all.

  TypeScript bundles by default, and bundling is what makes the output path yours to choose.
  bundleFormat starts at 4 (IIFE) for a new project: tsc emits the whole program to a temporary
  folder and Rollup inlines it into one self-contained file. Such a file refers to nothing beside
  it, so '--output-folder' and '--output-name' work normally.

  Set bundleFormat=0 and that reverses. The compiler emits one file per input and writes the
  relative specifiers between them, so the program must stay where it was put: '--output-folder'
  and '--output-name' are refused rather than accepted and ignored, and the output-path settings do
  nothing. Move such a file's output by moving the project's Source or Build Folder.

  Before switching bundling off for a website: TypeScript emits relative specifiers verbatim and
  never adds '.js', so an extensionless import — how most TypeScript is written — is a 404 in a
  browser. Bundling is what resolves them. The AMD, System and UMD module types, the ES5 target and the
  Node.js and Classic resolutions were removed in TypeScript 7; a project that used any of them
  was migrated the first time it was opened in this version.

  'packages' takes the project's own npm settings for anything you leave out, so an ordinary
  install is just 'fernlow packages install'. What you do pass applies to that one run and is not
  written back to the project. Uninstalling must name packages: there is no 'npm uninstall' with
  no arguments.

  'build --clean' empties the Build Folder for that build alone and leaves the project's own
  "clean build" setting as it was.

  'collections' is where rows are made and unmade, as against 'settings', which changes rows that
  already exist. An ESLint rule, a Babel plugin and an Uglify flag are rows of a list Fernlow
  ships: their settings change through 'settings set --group', and their membership cannot change
  at all. Hooks, build steps, WebP presets and custom extensions are yours to add and remove.

  A Hook runs on the files its predicate matches, and a new Hook matches every file in its
  project until told otherwise — so scope it in the same request that creates it. Three list
  fields cover the common cases and are compiled into the predicate for you: matchExtensions,
  pathContains and pathDoesNotContain, sent through --values as JSON, with extensions accepted
  with or without their leading dot. Setting any of them replaces the whole predicate. For
  anything the lists cannot say, matchesFormat takes a raw NSPredicate format string instead,
  and cannot be combined with the list fields; the keys files carry are inputFilename,
  inputFullPath and inputAbbreviatedPath, and a format that cannot be parsed or evaluated is
  refused rather than stored.

  A Hook script may launch background processes, and the build does not wait for them: Fernlow
  stops capturing the script's output three seconds after the script itself exits. Anything a
  background process prints after that is not in the log, so a Hook whose real work happens in a
  background process should do that work in the foreground instead.

  A build step's position decides when it runs, so 'collections move' is a change of behaviour.
  Some steps are ones Fernlow requires and will refuse to be removed.

  'files' answers from Fernlow's index, not from the disk. Fernlow re-reads a project's folder
  whenever files appear or disappear, so the two normally agree. If a file you expect is missing,
  or one you deleted is still listed, run 'fernlow refresh <path>' and ask again. Do not work
  around the difference: a stale index is what Fernlow would compile from too.)";

} // namespace

std::string usageText() {
    std::string text(upToDefaultTimeout);
    text += std::to_string(static_cast<int>(options::timeout.defaultValue()));
    text += upToDefaultSettle;
    text += std::to_string(options::settle.defaultValue());
    text += afterDefaultSettle;
    return text;
}

} // namespace fernlow
