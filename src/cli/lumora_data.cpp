// lumora-data: the stored batches from a shell, with no display. "list" prints them; "export"
// loads one into its function's window (on the offscreen platform, as the program would show it)
// and writes the same files as File > "Export data (CSV, JCAMP-DX)..."; "restore" brings a batch
// deleted on a shared server back from its trash.
// Exit status: 0 done, 2 bad arguments, 1 a missing store or batch, or a write that failed.
#include "functions/function_catalog.h"
#include "functions/function_window.h"
#include "link/shared_state.h"
#include "opendata/exporters.h"
#include "platform/prompts.h"
#include "store/batches.h"
#include "store/database.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <clocale>
#include <cstdio>
#include <map>
#include <memory>

using namespace lumora;
using namespace lumora::opendata;

namespace {

const char* const usage_text =
    "Usage:\n"
    "  lumora-data list [--function F] [--db PATH]\n"
    "  lumora-data export --function F --batch NAME --format jcamp|csv [--compound] --out DIR [--db PATH]\n"
    "  lumora-data restore FUNCTION NAME [--db URL]\n"
    "  lumora-data --help\n"
    "\n"
    "  list     prints the stored result batches: function, name, saved by, saved at.\n"
    "  export   writes the batch NAME of function F into the folder DIR (created if missing):\n"
    "           csv    one CSV table (Quantitative: NAME-standards.csv and NAME-samples.csv);\n"
    "           jcamp  Spectrum only, one JCAMP-DX file per curve (NAME-1.jdx, ...), or with\n"
    "                  --compound one file NAME.jdx holding every curve as a block.\n"
    "  restore  brings the batch NAME of FUNCTION (PHOTOMETRY, SPECTRUM, TIMESCAN, KINETIC,\n"
    "           QUANTITATIVE, PROTEIN or TIMESCAN2) that was deleted last on a shared server back\n"
    "           from the server's trash; refused while a stored batch has that name.\n"
    "\n"
    "  --function F  PHOTOMETRY, SPECTRUM, TIMESCAN, TIMESCAN2 or QUANTITATIVE (any case).\n"
    "  --db PATH     the database file, or a postgresql:// URL of a lab's shared server; else\n"
    "                LUMORA_DATABASE, else the url of the [database] section of the program's\n"
    "                settings file, else Lumora.db in the data folder (LUMORA_DATA_DIR or the\n"
    "                user's application data folder), as the program uses. A server's password\n"
    "                comes from ~/.pgpass, PGPASSFILE or PGPASSWORD.\n"
    "\n"
    "Exit status: 0 done, 2 bad arguments, 1 no such database or batch, or a file not written.\n";

struct bad_arguments {
    QString why;
};
struct failure {
    QString why;
};

struct arguments {
    QString command;
    QStringList words; // what follows the command: FUNCTION NAME of restore
    std::map<QString, QString> options;
    bool compound = false;
    QString option(const char* name) const {
        const auto it = options.find(QString::fromLatin1(name));
        return it == options.end() ? QString() : it->second;
    }
};

arguments parse(const QStringList& args) {
    arguments a;
    static const QStringList valued{QStringLiteral("--function"), QStringLiteral("--batch"),
                                    QStringLiteral("--format"), QStringLiteral("--out"),
                                    QStringLiteral("--db")};
    for (qsizetype i = 1; i < args.size(); ++i) {
        QString arg = args[i];
        QString value;
        bool has_value = false;
        const qsizetype eq = arg.indexOf(QLatin1Char('='));
        if (arg.startsWith(QLatin1String("--")) && eq > 0) {
            value = arg.mid(eq + 1);
            arg.truncate(eq);
            has_value = true;
        }
        if (arg == QLatin1String("--help") || arg == QLatin1String("-h")) {
            a.command = QStringLiteral("help");
            return a;
        }
        if (arg == QLatin1String("--compound")) {
            a.compound = true;
        } else if (valued.contains(arg)) {
            if (!has_value) {
                if (i + 1 >= args.size()) throw bad_arguments{arg + QStringLiteral(" needs a value")};
                value = args[++i];
            }
            if (a.options.count(arg)) throw bad_arguments{arg + QStringLiteral(" is given twice")};
            a.options[arg] = value;
        } else if (arg.startsWith(QLatin1Char('-'))) {
            throw bad_arguments{QStringLiteral("unknown option ") + arg};
        } else if (a.command.isEmpty()) {
            a.command = arg;
        } else if (a.command == QLatin1String("restore") && a.words.size() < 2) {
            a.words << arg;
        } else {
            throw bad_arguments{QStringLiteral("unexpected argument ") + arg};
        }
    }
    if (a.command.isEmpty()) throw bad_arguments{QStringLiteral("no command: list, export or restore")};
    if (a.command != QLatin1String("list") && a.command != QLatin1String("export") &&
        a.command != QLatin1String("restore"))
        throw bad_arguments{QStringLiteral("unknown command ") + a.command};
    if (a.command == QLatin1String("restore")) {
        if (a.words.size() < 2) throw bad_arguments{QStringLiteral("restore needs FUNCTION and NAME")};
        if (a.options.size() > a.options.count(QStringLiteral("--db")) || a.compound)
            throw bad_arguments{QStringLiteral("restore takes --db only")};
    }
    return a;
}

const function_export& function_of(const QString& name) {
    const function_export* e = export_for(name);
    if (!e) throw bad_arguments{QStringLiteral("unknown function ") + name};
    return *e;
}

void open_database(const arguments& a) {
    QString path = a.option("--db");
    if (path.isEmpty()) path = qEnvironmentVariable("LUMORA_DATABASE");
    if (path.isEmpty()) path = configured_server_url();
    if (path.isEmpty()) path = db_path();
    if (is_server_url(path)) {
        const QString why = db_open_server(path);
        if (!why.isEmpty()) throw failure{QStringLiteral("the database is not reachable: ") + why};
        return;
    }
    if (!QFileInfo(path).isFile()) throw failure{QStringLiteral("no database at ") + path};
    const QString why = db_open_file(path, false, true);
    if (!why.isEmpty())
        throw failure{QStringLiteral("the database ") + path + QStringLiteral(" cannot be read: ") + why};
}

void print_line(std::FILE* to, const QString& text) {
    std::fputs(text.toLocal8Bit().constData(), to);
    std::fputc('\n', to);
}

int list(const arguments& a) {
    if (!a.option("--batch").isEmpty() || !a.option("--format").isEmpty() || !a.option("--out").isEmpty() ||
        a.compound)
        throw bad_arguments{QStringLiteral("list takes --function and --db only")};
    std::vector<const function_export*> functions;
    if (a.options.count(QStringLiteral("--function")))
        functions.push_back(&function_of(a.option("--function")));
    else
        for (const function_export& e : exports())
            functions.push_back(&e);
    open_database(a);
    print_line(stdout, QStringLiteral("FUNCTION\tNAME\tSAVED BY\tSAVED AT"));
    for (const function_export* e : functions) {
        const QString function = batch_function_name(e->function_id);
        for (const batch_header& h : batch_list(batch_kind::data, function)) {
            QString who = h.saved_by;
            if (!h.host.isEmpty()) who += QLatin1Char('@') + h.host;
            print_line(stdout, function + QLatin1Char('\t') + h.name + QLatin1Char('\t') + who +
                                   QLatin1Char('\t') +
                                   (h.saved_at.isValid() ? iso_time(h.saved_at) : QStringLiteral("-")));
        }
    }
    return 0;
}

int restore(const arguments& a) {
    QString function;
    for (int id : {1, 2, 3, 4, 5, 11, 13})
        if (batch_function_name(id).compare(a.words[0], Qt::CaseInsensitive) == 0)
            function = batch_function_name(id);
    if (function.isEmpty()) throw bad_arguments{QStringLiteral("unknown function ") + a.words[0]};
    const QString name = a.words[1];
    open_database(a);
    const restored_batch back = batch_restore(function, name);
    switch (back.result) {
    case restore_result::no_trash:
        throw failure{QStringLiteral("the batches are in a database file, which keeps no trash: a batch "
                                     "deleted there is gone")};
    case restore_result::not_in_trash:
        throw failure{QStringLiteral("no %1 batch named %2 in the trash").arg(function, name)};
    case restore_result::name_taken:
        throw failure{QStringLiteral("a %1 batch named %2 is stored again; delete or keep it, the one in the "
                                     "trash stays there")
                          .arg(function, back.name)};
    case restore_result::restored:
        break;
    }
    print_line(stdout, QStringLiteral("restored %1 %2 batch %3 (deleted by %4 at %5)")
                           .arg(function,
                                back.kind == batch_kind::data ? QStringLiteral("result")
                                                              : QStringLiteral("parameter"),
                                back.name, back.deleted_by.isEmpty() ? QStringLiteral("-") : back.deleted_by,
                                back.deleted_at.isValid() ? iso_time(back.deleted_at) : QStringLiteral("-")));
    return 0;
}

int export_batch(const arguments& a) {
    for (const char* required : {"--function", "--batch", "--format", "--out"})
        if (a.option(required).isEmpty())
            throw bad_arguments{QStringLiteral("export needs ") + QString::fromLatin1(required)};
    const function_export& e = function_of(a.option("--function"));
    const QString function = batch_function_name(e.function_id);
    const QString format_name = a.option("--format").toLower();
    export_format format = export_format::csv;
    if (format_name == QLatin1String("jcamp")) {
        if (!e.spectra) throw bad_arguments{function + QStringLiteral(" exports CSV only")};
        format = a.compound ? export_format::jcamp_compound : export_format::jcamp;
    } else if (format_name != QLatin1String("csv")) {
        throw bad_arguments{QStringLiteral("unknown format ") + a.option("--format") +
                            QStringLiteral(": jcamp or csv")};
    } else if (a.compound) {
        throw bad_arguments{QStringLiteral("--compound goes with --format jcamp")};
    }
    const QString out = a.option("--out");
    open_database(a);

    const QString wanted = a.option("--batch");
    export_source source;
    bool found = false;
    for (const batch_header& h : batch_list(batch_kind::data, function)) {
        if (h.name.compare(wanted, Qt::CaseInsensitive) != 0) continue;
        source.batch = h.name;
        source.saved_by = h.host.isEmpty() ? h.saved_by : h.saved_by + QLatin1Char('@') + h.host;
        source.saved_at = h.saved_at;
        found = true;
    }
    const std::vector<batch_row> rows =
        found ? batch_read(batch_kind::data, function, source.batch) : std::vector<batch_row>{};
    if (rows.empty()) throw failure{QStringLiteral("no %1 batch named %2").arg(function, wanted)};
    source.name = safe_file_name(source.batch);

    // The function's window rebuilt from the batch, as File > "Load data" leaves it.
    const function_entry* entry = function_by_id(e.function_id);
    if (!entry) throw failure{QStringLiteral("no window for ") + function};
    shared.function_id = static_cast<std::int16_t>(e.function_id);
    prompts::script(); // a window's word to the user after a load has no one to read it here
    std::unique_ptr<function_window> window(make_function_window(*entry));
    window->load_result(rows);
    const std::vector<out_file> files = e.make(*window, format, source);
    if (files.empty())
        throw failure{QStringLiteral("the batch %1 holds no data to export").arg(source.batch)};

    if (!QDir().mkpath(out)) throw failure{out + QStringLiteral(": the folder cannot be created")};
    const QString why = write_all(out, files);
    if (!why.isEmpty()) throw failure{why};
    for (const out_file& f : files)
        print_line(stdout, QDir::toNativeSeparators(QDir(out).filePath(safe_file_name(f.name))));
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    // No display is needed: the windows that rebuild a batch draw offscreen.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Stderr carries the tool's one line; Qt's notes on its own environment stay out of it.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtCriticalMsg || type == QtFatalMsg) print_line(stderr, text);
    });
    QStringList args;
    for (int i = 0; i < argc; ++i)
        args << QString::fromLocal8Bit(argv[i]);
    try {
        const arguments a = parse(args);
        if (a.command == QLatin1String("help")) {
            std::fputs(usage_text, stdout);
            return 0;
        }
        // Listing reads the store only; an export needs the widgets of the function's window.
        std::unique_ptr<QCoreApplication> app;
        if (a.command != QLatin1String("export"))
            app = std::make_unique<QCoreApplication>(argc, argv);
        else
            app = std::make_unique<QApplication>(argc, argv);
        // Qt took the user's locale for everything; the stored numbers are read with a point.
        std::setlocale(LC_NUMERIC, "C");
        const int rc = a.command == QLatin1String("list")      ? list(a)
                       : a.command == QLatin1String("restore") ? restore(a)
                                                               : export_batch(a);
        db_close();
        return rc;
    } catch (const bad_arguments& e) {
        print_line(stderr,
                   QStringLiteral("lumora-data: ") + e.why + QStringLiteral(" (see lumora-data --help)"));
        return 2;
    } catch (const failure& e) {
        print_line(stderr, QStringLiteral("lumora-data: ") + e.why);
        return 1;
    } catch (const db_error& e) {
        print_line(stderr,
                   QStringLiteral("lumora-data: ") + store_fault_text(e, QStringLiteral("the database: ")));
        return 1;
    }
}
