#pragma once
// The report preview, titled "Report": one tall picture of the pages with grey bands between
// them, zoomed in steps of 0.25 from 0.25 to 1.0 and paged with "PageDn" and "PageUp".
#include "report_page.h"

#include <QWidget>
#include <functional>
#include <memory>

class QLabel;
class QScrollBar;
class QToolBar;

namespace lumora {

class frmReport : public QWidget {
    Q_OBJECT
public:
    // `make` draws the report at a scale (report_make of the active function).
    explicit frmReport(std::function<std::unique_ptr<report_page>(double scale)> make,
                       QWidget* parent = nullptr);

    double report_scale() const { return scale_; }
    void zoom_in();
    void zoom_out();
    void page_down();
    void page_up();
    // Draws the report anew at report_scale.
    void report_make();

    const report_page* page() const { return page_.get(); }
    QWidget* picScroll() const { return scroll_; }
    QLabel* picReport() const { return picture_; }
    QScrollBar* HScroll1() const { return hscroll_; }
    QToolBar* Toolbar1() const { return toolbar_; }

protected:
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void move_picture(int top);
    void update_range();

    std::function<std::unique_ptr<report_page>(double)> make_;
    std::unique_ptr<report_page> page_;
    double scale_ = 0.5;
    QToolBar* toolbar_ = nullptr;
    QWidget* scroll_ = nullptr;
    QLabel* picture_ = nullptr;
    QScrollBar* hscroll_ = nullptr;
};

} // namespace lumora
