#include "frmPortSet.h"

#include "command_ring.h"
#include "link_context.h"
#include "photometric.h"
#include "platform/comm_port.h"
#include "protocol.h"
#include "shared_state.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace lumora {

frmPortSet::frmPortSet(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmPortSet"));
    setWindowTitle(QStringLiteral("COM Port Setting"));
    setModal(true);

    auto* frame = new QGroupBox(QStringLiteral("Com Port"), this);
    frame->setObjectName(QStringLiteral("Frame1"));
    auto* frame_layout = new QVBoxLayout(frame);
    auto* group = new QButtonGroup(this);
    for (int i = 0; i < 4; ++i) {
        auto* option = new QRadioButton(QStringLiteral("Com %1").arg(i + 1), frame);
        option->setObjectName(QStringLiteral("Option1_%1").arg(i));
        option->setToolTip(com_device_path(i + 1));
        group->addButton(option, i);
        frame_layout->addWidget(option);
        options_[i] = option;
        connect(option, &QRadioButton::clicked, this, [this, i] { Option1_Click(i); });
    }
    check1_ = new QCheckBox(QStringLiteral("Scan baseline at the start"), this);
    check1_->setObjectName(QStringLiteral("Check1"));
    auto* label = new QLabel(
        QStringLiteral("Please turn off other application programs before proceeding com port setting."),
        this);
    label->setObjectName(QStringLiteral("Label1"));
    label->setWordWrap(true);

    open_ = new QPushButton(QStringLiteral("Port open"), this);
    open_->setObjectName(QStringLiteral("cmdPortOpen"));
    open_->setDefault(true);
    auto* close = new QPushButton(QStringLiteral("Port close"), this);
    close->setObjectName(QStringLiteral("cmdPortClose"));
    auto* cancel = new QPushButton(QStringLiteral("Cancel"), this);
    cancel->setObjectName(QStringLiteral("cmdCancel"));
    connect(open_, &QPushButton::clicked, this, &frmPortSet::cmdPortOpen_Click);
    connect(close, &QPushButton::clicked, this, &frmPortSet::cmdPortClose_Click);
    connect(cancel, &QPushButton::clicked, this, &frmPortSet::cmdCancel_Click);

    auto* buttons = new QVBoxLayout;
    buttons->addWidget(open_);
    buttons->addWidget(close);
    buttons->addWidget(cancel);
    buttons->addStretch();
    auto* top = new QHBoxLayout;
    top->addWidget(frame);
    top->addLayout(buttons);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(check1_);
    layout->addWidget(label);
}

void frmPortSet::showEvent(QShowEvent* event) {
    Form_Activate();
    QDialog::showEvent(event);
}

void frmPortSet::Form_Activate() {
    const int index = shared.com_port < 1 || shared.com_port > 4 ? 0 : shared.com_port - 1;
    options_[index]->setChecked(true);
    if (shared.com_port < 1) Option1_Click(0);
    for (int i = 0; i < 4; ++i)
        options_[i]->setToolTip(com_device_path(i + 1));
    if (!shared.baseline_missing) {
        check1_->setChecked(false);
        check1_->setEnabled(true);
    } else {
        check1_->setChecked(true);
        check1_->setEnabled(false);
    }
    open_->setFocus();
}

void frmPortSet::Option1_Click(int index) {
    shared.com_port = static_cast<std::int16_t>(index + 1);
}

void frmPortSet::cmdPortOpen_Click() {
    comm_port* port = link_ctx.port;
    if (!port) return;
    shared.function_id = fid_startup;
    port->RTSEnable = true;
    port->InputMode = 1;
    port->InputLen = 0;
    port->Settings = QStringLiteral("57600,N,8,1");
    if (port->PortOpen()) port->setPortOpen(false);
    port->CommPort = shared.com_port < 1 ? 1 : shared.com_port;
    if (!port->PortOpen()) {
        const QString why = port->setPortOpen(true);
        if (!why.isEmpty()) {
            // The dialog stays open so that another port can be picked; the reason is told.
            set_panel(6, QStringLiteral("Com %1: %2").arg(port->CommPort).arg(why));
            return;
        }
    }
    const auto& h = link_ctx.hooks;
    if (h.toolbar_disable_function) h.toolbar_disable_function();
    try {
        send_message(cmd_connect);
    } catch (const run_fault&) {
    }
    shared.measure_mode = mm_lambda_panel;
    if (h.enable_timer) h.enable_timer();
    hide();
}

void frmPortSet::cmdPortClose_Click() {
    comm_port* port = link_ctx.port;
    if (port && port->PortOpen()) port->setPortOpen(false);
    set_panel(4, QStringLiteral("Off-line"));
    emit enable_menus();
}

void frmPortSet::cmdCancel_Click() {
    hide();
    emit enable_menus();
}

bool frmPortSet::scan_baseline_at_start() const {
    return check1_->isChecked();
}

} // namespace lumora
