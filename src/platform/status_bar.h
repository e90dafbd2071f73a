#pragma once
// The main window's status bar: six text panels numbered 1 to 6. Panels 3 and 5 are clickable.
#include <QLabel>
#include <QStatusBar>
#include <array>

namespace lumora {

class status_panel : public QLabel {
    Q_OBJECT
public:
    using QLabel::QLabel;
signals:
    void clicked();

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
};

class status_bar : public QStatusBar {
    Q_OBJECT
public:
    static constexpr int panel_count = 6;
    explicit status_bar(QWidget* parent = nullptr);

    QString text(int panel) const;
    void set_text(int panel, const QString& text);
    status_panel* panel(int panel) const;

signals:
    void panel_clicked(int panel);
    // Every panel write, in order (the trace and the tests listen).
    void panel_written(int panel, const QString& text);

private:
    std::array<status_panel*, panel_count> panels_{};
};

} // namespace lumora
