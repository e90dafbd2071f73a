#include "dlgSystem.h"

#include "functions/dialog_parts.h"
#include "link/command_ring.h"
#include "link/link_context.h"
#include "link/photometric.h"
#include "link/protocol.h"
#include "link/shared_state.h"
#include "platform/numeric_text.h"
#include "platform/prompts.h"
#include "store/database.h"
#include "system_rules.h"

#include <QCloseEvent>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>

namespace lumora {
namespace {

constexpr double lowest_lambda = 330, highest_lambda = 1100;

// The dialog the decoder's hooks reach: one deleted late must not unhook its successor.
const dlgSystem* hooked = nullptr;

double limited_lambda(const QString& text) {
    return std::clamp(val(text.toStdString()), lowest_lambda, highest_lambda);
}

} // namespace

dlgSystem::dlgSystem(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("dlgSystem"));
    setWindowTitle(QStringLiteral("Property Setup"));
    setAttribute(Qt::WA_DeleteOnClose);

    tabs_ = new QTabWidget(this);
    tabs_->setObjectName(QStringLiteral("tsp1"));
    std::array<QFrame*, 2> frames{};
    const char* tab_captions[2] = {"System", "Lamp"};
    for (std::size_t i = 0; i < frames.size(); ++i) {
        frames[i] = new QFrame(tabs_);
        frames[i]->setObjectName(QStringLiteral("Frame1_%1").arg(i));
        tabs_->addTab(frames[i], QString::fromLatin1(tab_captions[i]));
    }

    option_ = new QLineEdit(frames[0]);
    option_->setObjectName(QStringLiteral("txtOption_0"));
    option_->setToolTip(QStringLiteral("Number from 330 to 1100"));
    connect(option_, &QLineEdit::editingFinished, this, &dlgSystem::txtOption_LostFocus);
    const char* captions[4] = {"Send request", "Search zero position", "Scan baseline",
                               "Check light intensity "};
    for (int i = 0; i < 4; ++i) {
        auto* b = new QPushButton(QString::fromLatin1(captions[i]), frames[0]);
        b->setObjectName(QStringLiteral("cmdOption_%1").arg(i));
        b->setToolTip(QStringLiteral("Send request command"));
        b->setAutoDefault(false);
        connect(b, &QPushButton::clicked, this, [this, i] { cmdOption_Click(i); });
        buttons_[static_cast<std::size_t>(i)] = b;
    }
    auto* page = new QGridLayout(frames[0]);
    page->addWidget(buddy_label(QStringLiteral("Initial wavelength(nm)="), option_, frames[0],
                                QStringLiteral("lblOption_0")),
                    0, 0);
    page->addWidget(option_, 0, 1);
    page->addWidget(buttons_[0], 0, 2);
    for (int i = 1; i < 4; ++i)
        page->addWidget(buttons_[static_cast<std::size_t>(i)], i, 0, 1, 3);
    page->setRowStretch(4, 1);

    const char* lamp_texts[2] = {"Vis lamp status = ", "UV lamp status = "};
    auto* lamp_page = new QVBoxLayout(frames[1]);
    for (std::size_t i = 0; i < lamp_labels_.size(); ++i) {
        lamp_labels_[i] = new QLabel(QString::fromLatin1(lamp_texts[i]), frames[1]);
        lamp_labels_[i]->setObjectName(QStringLiteral("lblLamp_%1").arg(i));
        lamp_page->addWidget(lamp_labels_[i]);
    }
    lamp_page->addStretch();

    ok_ = new QPushButton(QStringLiteral("Exit"), this);
    ok_->setObjectName(QStringLiteral("cmdOk"));
    ok_->setAutoDefault(false);
    connect(ok_, &QPushButton::clicked, this, &QWidget::close);
    auto* row = new QHBoxLayout;
    row->addStretch();
    row->addWidget(ok_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs_);
    layout->addLayout(row);

    link_hooks& h = link_ctx.hooks;
    h.system_enable_function = [this](bool on) { enable_function(on); };
    h.system_enable_zero_search = [this] { enable_ZeroSearch(); };
    h.system_check_light_level = [this](std::int32_t mean) { check_light_level(mean); };
    hooked = this;

    Form_Load();
}

dlgSystem::~dlgSystem() {
    if (hooked != this) return;
    hooked = nullptr;
    link_hooks& h = link_ctx.hooks;
    h.system_enable_function = nullptr;
    h.system_enable_zero_search = nullptr;
    h.system_check_light_level = nullptr;
}

void dlgSystem::Form_Load() {
    lambda_before_ = shared.lambda_now;
    // The stored name is "Default WL"; the name is compared without case.
    record_set rs;
    try {
        rs = db_query(QStringLiteral("SELECT ParaValue FROM system where ParaName=? COLLATE NOCASE "),
                      {QStringLiteral("default WL")});
    } catch (const db_error&) {
        return; // an unreadable store leaves the field empty; the program start has said why
    }
    if (rs.RecordCount() > 0) {
        const double lambda = limited_lambda(rs.Fields(0));
        shared.default_lambda = lambda;
        option_->setText(format_text(lambda, "0"));
    }
}

void dlgSystem::txtOption_LostFocus() {
    option_->setText(format_text(limited_lambda(option_->text()), "0"));
}

void dlgSystem::enable_function(bool enabled) {
    tabs_->setEnabled(enabled);
    ok_->setEnabled(enabled);
    for (QPushButton* b : buttons_)
        b->setEnabled(enabled);
    option_->setEnabled(enabled);
}

void dlgSystem::enable_ZeroSearch() {
    enable_function(false);
    tabs_->setEnabled(true);
    buttons_[1]->setEnabled(true);
}

void dlgSystem::cmdOption_Click(int index) {
    switch (index) {
    case 0:
        send_wavelength();
        break;
    case 1:
        search_zero();
        break;
    case 2:
        scan_baseline();
        break;
    case 3:
        check_light();
        break;
    default:
        break;
    }
}

void dlgSystem::send_wavelength() {
    // A click reaches here before the field has lost its focus: the value is limited the same way,
    // so nothing out of range is stored.
    txtOption_LostFocus();
    const QString text = option_->text();
    try {
        db_execute(QStringLiteral("update system set ParaValue=? where ParaName=? "),
                   {text, QStringLiteral("Default WL")});
    } catch (const db_error& e) {
        set_panel(6, QStringLiteral("Wavelength not saved: ") + e.what);
        prompts::message_box(QStringLiteral("The wavelength could not be saved: ") + e.what,
                             box_icon::critical, QStringLiteral("System Message"));
        return;
    }
    // The next start-up runs to the wavelength just kept.
    shared.default_lambda = val(text.toStdString());
    begin_exchange();
    prompts::message_box(QStringLiteral("Wavelength saved!"), box_icon::information,
                         QStringLiteral("Information"));
}

void dlgSystem::search_zero() {
    enable_function(false);
    begin_exchange();
    send_message(cmd_search_zero);
    set_panel(1, QStringLiteral("0nm"));
    set_panel(2, QStringLiteral("0.000A"));
}

void dlgSystem::scan_baseline() {
    enable_function(false);
    begin_exchange();
    send_message(cmd_read_dark);
}

void dlgSystem::check_light() {
    enable_function(false);
    set_panel(6, QStringLiteral("Check light intensity..."));
    shared.lambda_now = 500;
    shared.lambda_now_int = 500;
    begin_exchange();
    send_message(cmd_goto_lambda);
    shared.measure_mode = mm_light_check;
}

void dlgSystem::check_light_level(std::int32_t intensity) {
    enable_function(true);
    const bool ok = light_level_ok(light_volts(intensity, get_dark()));
    prompts::message_box(ok ? QStringLiteral("Light intensity level OK.")
                            : QStringLiteral("Light intensity level too low."),
                         box_icon::information, QStringLiteral("Information"));
}

void dlgSystem::show_lamp_hour(const std::uint8_t* bytes, std::size_t size) {
    const std::int32_t counts[2] = {bytes_to_long(4, 4, bytes, size), bytes_to_long(8, 4, bytes, size)};
    for (std::int32_t c : counts)
        if (!fits_int16(c)) return; // a count past a 16-bit field is an overflow: nothing is shown
    const char* texts[2] = {"Vis lamp status = ", "UV lamp status = "};
    for (std::size_t i = 0; i < 2; ++i)
        lamp_labels_[i]->setText(QString::fromLatin1(texts[i]) + format_text(counts[i] / 6.0, "0.0") +
                                 QStringLiteral(" hour(s) used."));
}

void dlgSystem::reject() {
    close();
}

void dlgSystem::closeEvent(QCloseEvent* event) {
    if (shared.zero_failed) {
        event->ignore(); // the instrument has no zero: only a successful search lets the user out
        return;
    }
    Form_Unload();
    event->accept();
    QDialog::done(QDialog::Rejected);
}

void dlgSystem::Form_Unload() {
    if (!ok_->isEnabled()) return; // an operation is running: the instrument stays where it is
    shared.function_id = fid_no_function;
    set_panel(6, QStringLiteral("Running to previous position..."));
    shared.lambda_now = lambda_before_;
    shared.lambda_now_int = static_cast<std::int16_t>(fits_int16(lambda_before_) ? cint(lambda_before_) : 0);
    begin_exchange();
    shared.measure_mode = mm_lambda_panel;
    send_message(cmd_goto_lambda);
    if (link_ctx.hooks.enable_menus) link_ctx.hooks.enable_menus(true);
}

} // namespace lumora
