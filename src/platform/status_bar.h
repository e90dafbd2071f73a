#pragma once
// The main window's status bar: six text panels numbered 1 to 6. Panels 3 and 5 are clickable.
//
// For screen readers each panel's accessible name is its text (the reading, the wavelength,
// "On-line", the activity) and its accessible description says what the panel is. The clickable
// panels take the focus and answer Enter and Space as a click, and show as push buttons.
#include <QLabel>
#include <QStatusBar>
#include <array>

namespace lumora {

class status_panel : public QLabel {
    Q_OBJECT
public:
    using QLabel::QLabel;

    // A clickable panel takes the keyboard focus (Tab) and opens its window on Enter or Space.
    void set_clickable(bool clickable);
    bool clickable() const { return clickable_; }
    // What a click does, from the mouse, the keyboard or an assistive tool.
    void press();

signals:
    void clicked();

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    bool clickable_ = false;
};

class status_bar : public QStatusBar {
    Q_OBJECT
public:
    static constexpr int panel_count = 6;
    explicit status_bar(QWidget* parent = nullptr);

    QString text(int panel) const;
    // Every panel write goes through here: the text, the accessible name, and panel_written.
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
