// Stored batches on a real SQLite file and on a real PostgreSQL server (server:0 and server:1 in
// the names): a 32,767-sample fixed-interval Timescan and a 20-curve Spectrum (15,841 rows), each
// saved from its window and loaded back into it; and the same 20-curve save as one autocommitted
// statement per row into the file, the reference for the one-transaction save. The server is
// LUMORA_BENCH_DATABASE when it names one, else a local one started for the run
// (tests/support/pg-test-server) and stopped at its end.
#include "functions/function_catalog.h"
#include "functions/spectrum/frmSpectrum.h"
#include "functions/spectrum/spectrum_data.h"
#include "functions/spectrum/spectrum_setup.h"
#include "functions/timescan/timescan_setup.h"
#include "functions/timescan_interval/frmTimescan2.h"
#include "functions/timescan_interval/timescan_interval_data.h"
#include "link/shared_state.h"
#include "platform/grid.h"
#include "plot/palette.h"
#include "store/batches.h"
#include "store/database.h"

#include <QApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <memory>

using namespace lumora;

namespace {

const QString ti_name = QStringLiteral("TIMESCAN2");
const QString sp_name = QStringLiteral("SPECTRUM");

QString server_url; // "" when there is no server to measure

struct store_fixture {
    QTemporaryDir dir;
    bool ok = true;
    explicit store_fixture(benchmark::State& state) {
        db_open_file(dir.path() + QStringLiteral("/Lumora.db"), true);
        if (state.range(0) == 0) return;
        if (server_url.isEmpty() || !db_open_server(server_url).isEmpty()) {
            ok = false;
            state.SkipWithError("no PostgreSQL server");
            return;
        }
        // Every run starts from an empty server.
        for (batch_kind kind : {batch_kind::data, batch_kind::parameter})
            batch_delete_all(kind);
        batch_scope scope;
        for (const char* table : {"trash_data", "trash_parameter", "trash_batches"})
            db_execute(QStringLiteral("DELETE FROM ") + QString::fromLatin1(table));
    }
    ~store_fixture() { db_close(); }
};

// What a save leaves behind goes before the next one; on the server that is the trash too.
void clear_batches() {
    batch_delete_all(batch_kind::data);
    batch_scope scope;
    if (db_target_is_server()) {
        db_execute(QStringLiteral("DELETE FROM trash_data"));
        db_execute(QStringLiteral("DELETE FROM trash_batches"));
    }
}

std::unique_ptr<frmTimescan2> interval_window_full() {
    shared.function_id = fid_timescan2;
    auto w = std::make_unique<frmTimescan2>(*function_by_id(fid_timescan2));
    grid& g = w->fgdTrack();
    g.setRows(32768);
    for (int k = 0; k < 32767; ++k) {
        g.setTextMatrix(k + 1, 0, QString::number(k));
        g.setTextMatrix(k + 1, 1, QString::number(k));
        g.setTextMatrix(k + 1, 2, QString::number(1 + (k % 1000) / 1000.0, 'f', 3));
    }
    return w;
}

std::unique_ptr<frmSpectrum> spectrum_window_full() {
    shared.function_id = fid_spectrum;
    spectrum_setup = SpectrumSetup{};
    reset_spectrum_data();
    auto w = std::make_unique<frmSpectrum>(*function_by_id(fid_spectrum));
    spectrum_setup.start_lambda = 320;
    spectrum_setup.stop_lambda = 1110;
    spectrum.curve_count = 20;
    for (int c = 1; c <= 20; ++c) {
        spectrum.curve_state[static_cast<std::size_t>(c)] = c == 20 ? 2 : 1;
        for (int p = 0; p < wavelength_points; ++p)
            shared.baseline_curves[static_cast<std::size_t>(p)][static_cast<std::size_t>(c)] =
                c * 0.1 + p / 1e4;
    }
    return w;
}

void BM_Timescan2Save(benchmark::State& state) {
    store_fixture store(state);
    if (!store.ok) return;
    auto w = interval_window_full();
    int n = 0;
    for (auto _ : state) {
        batch_save(batch_kind::data, ti_name, QStringLiteral("t%1").arg(++n), w->result_rows());
        state.PauseTiming();
        clear_batches();
        state.ResumeTiming();
    }
    state.counters["rows"] = static_cast<double>(w->result_rows().size());
}
BENCHMARK(BM_Timescan2Save)->ArgName("server")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_Timescan2Load(benchmark::State& state) {
    store_fixture store(state);
    if (!store.ok) return;
    auto w = interval_window_full();
    batch_save(batch_kind::data, ti_name, QStringLiteral("t1"), w->result_rows());
    for (auto _ : state) {
        w->load_result(batch_read(batch_kind::data, ti_name, QStringLiteral("t1")));
    }
    state.counters["samples"] = w->fgdTrack().Rows() - 1;
}
BENCHMARK(BM_Timescan2Load)->ArgName("server")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// The rows alone, out of the file: the share of the store in a load.
void BM_Timescan2ReadRows(benchmark::State& state) {
    store_fixture store(state);
    if (!store.ok) return;
    auto w = interval_window_full();
    batch_save(batch_kind::data, ti_name, QStringLiteral("t1"), w->result_rows());
    for (auto _ : state)
        benchmark::DoNotOptimize(batch_read(batch_kind::data, ti_name, QStringLiteral("t1")));
}
BENCHMARK(BM_Timescan2ReadRows)->ArgName("server")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_Spectrum20Save(benchmark::State& state) {
    store_fixture store(state);
    if (!store.ok) return;
    auto w = spectrum_window_full();
    int n = 0;
    for (auto _ : state) {
        batch_save(batch_kind::data, sp_name, QStringLiteral("s%1").arg(++n), w->result_rows());
        state.PauseTiming();
        clear_batches();
        state.ResumeTiming();
    }
    state.counters["rows"] = static_cast<double>(w->result_rows().size());
}
BENCHMARK(BM_Spectrum20Save)->ArgName("server")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_Spectrum20Load(benchmark::State& state) {
    store_fixture store(state);
    if (!store.ok) return;
    auto w = spectrum_window_full();
    batch_save(batch_kind::data, sp_name, QStringLiteral("s1"), w->result_rows());
    for (auto _ : state)
        w->load_result(batch_read(batch_kind::data, sp_name, QStringLiteral("s1")));
    state.counters["curves"] = spectrum.curve_count;
}
BENCHMARK(BM_Spectrum20Load)->ArgName("server")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// The reference: every row its own statement, committed on its own, values pasted into the text.
void BM_Spectrum20SaveRowByRow(benchmark::State& state) {
    store_fixture store(state);
    if (!store.ok) return;
    auto w = spectrum_window_full();
    int n = 0;
    for (auto _ : state) {
        const QString name = QStringLiteral("s%1").arg(++n);
        for (const batch_row& r : w->result_rows()) {
            const QString head =
                QStringLiteral("INSERT INTO DATA (BatchName,FunctionName,ParaSeqNo,ParaValue,ParaType");
            if (r.set > 0)
                db_execute(head +
                           QStringLiteral(",DataSet) VALUES ('%1','%2',%3,'%4','D','%5')")
                               .arg(name, sp_name, QString::number(r.seq), r.value, QString::number(r.set)));
            else
                db_execute(head + QStringLiteral(") VALUES ('%1','%2',%3,'%4','%5')")
                                      .arg(name, sp_name, QString::number(r.seq), r.value, r.type));
        }
        state.PauseTiming();
        clear_batches();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_Spectrum20SaveRowByRow)->Arg(0)->Unit(benchmark::kMillisecond)->Iterations(2);

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    set_default_colors();
    benchmark::Initialize(&argc, argv);
    server_url = qEnvironmentVariable("LUMORA_BENCH_DATABASE");
    QTemporaryDir server_dir;
    const QString state = server_dir.path() + QStringLiteral("/state");
    bool own_server = false;
    if (!is_server_url(server_url)) {
        server_url.clear();
        QProcess start;
        start.start(QStringLiteral(LUMORA_PG_TEST_SERVER), {QStringLiteral("start"), state});
        start.waitForFinished(120000);
        QFile f(state);
        if (start.exitCode() == 0 && f.open(QIODevice::ReadOnly)) {
            own_server = true;
            server_url = QString::fromUtf8(f.readAll()).split(QLatin1Char('\n')).value(1).trimmed();
        } else {
            std::fprintf(stderr, "no PostgreSQL server for the server runs: %s\n",
                         start.readAllStandardError().constData());
        }
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (own_server) {
        QProcess stop;
        stop.start(QStringLiteral(LUMORA_PG_TEST_SERVER), {QStringLiteral("stop"), state});
        stop.waitForFinished(60000);
    }
    return 0;
}
