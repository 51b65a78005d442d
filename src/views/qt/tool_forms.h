// The small windows around the track map: frmVirtualDash (one per playback
// panel, four instruments on a black board), frmMiniMap ("Mini Track Map")
// and frmValueTable ("Variable Values Table", the grid ValuesGrid), both
// floating tool windows, and frmAddTrackMarker, the dialog that names a
// marker drawn on the map.
#pragma once

#include <QDialog>
#include <QWidget>
#include <memory>

#include "platform/qt/view_window.h"
#include "views/dashboard.h"
#include "views/mini_map.h"
#include "views/value_table.h"

class QCheckBox;
class QLineEdit;
class QTableWidget;

namespace tl::views {

class SurfaceBox;

class DashboardForm : public QWidget, public qt::ViewWindow {
    Q_OBJECT
  public:
    // Form_Load for a panel: the scales found, the board 7000 x 3000 twips.
    // The caller enters it in DashForms.
    explicit DashboardForm(int panel, QWidget* parent = nullptr);
    ~DashboardForm() override;
    Dashboard& Dash() { return *dash_; }
    SurfaceBox* Board() const { return box_; }
    // The window's caption and frame colour from the dashboard's.
    void Sync();
    // DashVar_click's picture: faces and needles again.
    void Regenerate() override;
    QSize sizeHint() const override;

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void Release();
    SurfaceBox* box_ = nullptr;
    std::unique_ptr<Dashboard> dash_;
};

// The dashboard form of a panel in use, or null.
DashboardForm* DashboardFormOf(int panel);

class MiniMapForm : public QWidget, public qt::ViewWindow {
    Q_OBJECT
  public:
    explicit MiniMapForm(QWidget* parent = nullptr);
    MiniMap& Map() { return *map_; }
    SurfaceBox* Box() const { return box_; }
    // The cross at a row (drawn twice it is gone).
    void Move(int32_t row, int32_t run, int colourIndex);
    void Regenerate() override;

  private:
    SurfaceBox* box_ = nullptr;
    std::unique_ptr<MiniMap> map_;
};

class ValueTableForm : public QWidget, public qt::ViewWindow {
    Q_OBJECT
  public:
    explicit ValueTableForm(QWidget* parent = nullptr);
    ~ValueTableForm() override;
    ValueTable& Table() { return table_; }
    QTableWidget* Grid() const { return grid_; }
    // The grid shows the model when its generation has changed.
    void ShowModel();
    void Regenerate() override;

  protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    ValueTable table_;
    QTableWidget* grid_ = nullptr;
    uint64_t shown_ = ~uint64_t{0};
    bool unloaded_ = false;
};

// "Enter details forthe new marker": Exec() returns the entry named, or -1
// when cancelled or no entry is free.
class AddTrackMarkerForm : public QDialog {
    Q_OBJECT
  public:
    explicit AddTrackMarkerForm(QWidget* parent = nullptr);
    int Exec();
    void accept() override;

  private:
    int index_ = -1;
    QLineEdit* name_ = nullptr;
    QCheckBox* useAsLap_ = nullptr;
};

}  // namespace tl::views
