// Dialogs on Qt: message boxes, the shielded input box, file dialogs, the
// folder picker, the "Stand By" pause and every window model shown modally,
// each by the widget of the model's own name.
#pragma once

#include <functional>
#include <vector>

#include <QPointer>
#include <QWidget>

#include "ui/Dialogs.h"

namespace km::gui {

class ModelDialog;

class QtDialogs : public Dialogs {
public:
    QtDialogs();

    Answer message(const QString &text, Buttons buttons, Answer defaultButton, Icon icon,
                   const QString &title) override;
    std::optional<QString> inputBox(const QString &title, const QString &prompt,
                                    const QString &value) override;
    std::optional<QString> openFile(const FileDialogSpec &spec) override;
    std::optional<QString> saveFile(const FileDialogSpec &spec) override;
    std::optional<QString> pickFolder(const QString &title, const QString &start) override;
    bool showModal(WindowModel &window) override;
    void standBy(int ms) override;
    void status(const QString &text) override;
    bool mainWindowUp() const override;

    // The main window and where its comment panel is written.
    void setMainWindow(QWidget *window, std::function<void(const QString &)> comment);

    // The widget for one kind of window model: returns nullptr for a model of
    // another kind.
    using Factory = std::function<ModelDialog *(WindowModel &, QWidget *parent)>;
    void addWindow(Factory factory) { m_factories.push_back(std::move(factory)); }
    template <class Model, class Widget> void addWindow() {
        addWindow([](WindowModel &m, QWidget *parent) -> ModelDialog * {
            if (auto *model = dynamic_cast<Model *>(&m)) return new Widget(*model, parent);
            return nullptr;
        });
    }

    // The widget that shows the model, or nullptr if none is known; the caller owns it.
    ModelDialog *createWindow(WindowModel &window, QWidget *parent) const;

    // The window a new dialog stands over: the modal dialog in front, else the main window.
    QWidget *dialogParent() const;

private:
    std::vector<Factory> m_factories;
    QPointer<QWidget> m_main;
    std::function<void(const QString &)> m_comment;
};

// The caption of every message box.
inline constexpr const char *MessageCaption = "Kestrelmondarin";

} // namespace km::gui
