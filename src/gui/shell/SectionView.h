// The widget of one section window, shown in the main window's client area
// while its model is the section in view. Each section registers its own
// view; a section without one is drawn as an empty window with its name.
#pragma once

#include <functional>

#include <QWidget>

#include "shell/frmMDI.h"

namespace km::gui {

class SectionView : public QWidget {
    Q_OBJECT
public:
    using QWidget::QWidget;
    // Redraws the model's state; called after every change of the main window.
    virtual void sync() {}
};

// Returns the view for the model, or nullptr if the model is of another kind.
using SectionViewFactory = std::function<SectionView *(SectionWindow &, QWidget *parent)>;
void RegisterSectionView(SectionViewFactory factory);
// The registered view for the model, else the Startscreen or the placeholder.
SectionView *CreateSectionView(SectionWindow &model, QWidget *parent);

} // namespace km::gui
