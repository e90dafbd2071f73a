#include "settings_store.h"

#include "database.h"
#include "link/link_context.h"
#include "link/shared_state.h"
#include "platform/numeric_text.h"
#include "platform/prompts.h"

#include <array>
#include <memory>

namespace lumora {
namespace {

void busy(bool on) {
    if (link_ctx.hooks.busy_cursor) link_ctx.hooks.busy_cursor(on);
}

} // namespace

void load_settings() {
    record_set rs =
        db_query(QStringLiteral("SELECT ParaValue,ParaName FROM system  where ParaName NOT like 'BL%' "));
    if (rs.RecordCount() < 1) {
        db_execute(QStringLiteral("Insert into system (ParaName,ParaValue) values (?,?) "),
                   {QStringLiteral("Default WL"), QStringLiteral("500")});
    } else {
        for (; !rs.EOF_(); rs.MoveNext()) {
            const QString name = rs.Fields(1);
            const QString value = rs.Fields(0);
            if (name == QLatin1String("Default WL")) {
                const double wl = val(value.toStdString());
                if (wl >= 330 && wl <= 1100) {
                    shared.default_lambda = wl;
                } else {
                    shared.default_lambda = 500;
                    db_execute(QStringLiteral("update system set ParaValue=? where ParaName=? "),
                               {QStringLiteral("500"), QStringLiteral("Default WL")});
                }
            } else if (name == QLatin1String("Corporation Name")) {
                shared.corporation_name = value;
            } else if (name == QLatin1String("Product Name")) {
                shared.product_name = value;
            } else if (name == QLatin1String("Software Name")) {
                shared.software_name = value;
            } else if (name == QLatin1String("ComPort")) {
                const double port = val(value.toStdString());
                shared.com_port = fits_int16(port) ? static_cast<std::int16_t>(cint(port)) : 0;
            }
        }
    }
    load_baseline();
    apply_start_defaults();
    for (const auto& defaults : link_ctx.hooks.start_defaults)
        if (defaults) defaults();
}

void load_baseline() {
    try {
        record_set rs = db_query(QStringLiteral(
            "SELECT ParaValue,ParaName FROM system where ParaName like 'BL%' order by paraname"));
        if (rs.RecordCount() < 1) {
            shared.baseline_missing = true;
            return;
        }
        std::size_t i = 0;
        for (; !rs.EOF_() && i < static_cast<std::size_t>(wavelength_points); rs.MoveNext(), ++i) {
            const double v = val(rs.Fields(0).toStdString());
            shared.baseline_curves[i][0] = v;
            shared.reference_intensity[i] = v;
        }
        shared.baseline_missing = false;
    } catch (const db_error&) {
        // A failing statement ends the load; what was read stands.
    }
}

void save_baseline() {
    set_panel(6, QStringLiteral("Saving baseline..."));
    busy(true);
    // The baseline of this moment: a scan that starts while another program's lock delays the
    // write must not end up half in the file.
    auto baseline = std::make_shared<std::array<double, wavelength_points>>();
    for (std::size_t i = 0; i < baseline->size(); ++i)
        (*baseline)[i] = shared.baseline_curves[i][0];
    db_write_retrying(
        QStringLiteral("baseline"),
        [baseline] {
            db_execute(QStringLiteral("DELETE from system WHERE ParaName LIKE 'BL%' "));
            int tenths = 0;
            for (int i = 0; i < wavelength_points; ++i) {
                db_execute(QStringLiteral("Insert into system (ParaName,ParaValue) values (?,?) "),
                           {QStringLiteral("BL") + QString::fromStdString(format_number(i, "000")),
                            QString::number((*baseline)[static_cast<std::size_t>(i)], 'g', 15)});
                if (i % 79 == 0) {
                    ++tenths;
                    // Eleven steps, the last one "110% done...": that is the text users know.
                    set_panel(6, QStringLiteral("Saving baseline %1% done...").arg(10 * tenths));
                }
            }
        },
        [](const QString& why) {
            busy(false);
            if (why.isEmpty()) {
                shared.baseline_missing = false;
                set_panel(6, QStringLiteral("Baseline saved..."));
                return;
            }
            // Nothing was written; the measured baseline stays in use for this run.
            set_panel(6, QStringLiteral("Baseline not saved: ") + why);
            prompts::message_box(QStringLiteral("The baseline could not be saved in the database: ") + why +
                                     QStringLiteral(".\n\nThe measured baseline is used until the program "
                                                    "ends; scan it again once the database can be written."),
                                 box_icon::exclamation, QStringLiteral("System Message"));
        });
}

void save_com_port() {
    // Waits for another program's lock like the baseline; a port that still cannot be stored is
    // chosen again in the port dialog, so it needs no box.
    db_write_retrying(QStringLiteral("ComPort"),
                      [port = shared.com_port] {
                          db_execute(QStringLiteral("DELETE from system WHERE ParaName =? "),
                                     {QStringLiteral("ComPort")});
                          db_execute(QStringLiteral("Insert into system (ParaName,ParaValue) values (?,?) "),
                                     {QStringLiteral("ComPort"), QString::number(port)});
                      },
                      {});
}

} // namespace lumora
