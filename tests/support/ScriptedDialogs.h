// A Dialogs that records everything it is asked and answers from queues
// (the default button when the message queue is empty). Installed
// process-wide for the lifetime of the object.
#pragma once

#include <deque>
#include <functional>

#include <QList>
#include <QStringList>

#include "ui/Dialogs.h"

namespace km::test {

class ScriptedDialogs : public Dialogs {
public:
    ScriptedDialogs() { setUi(this); }
    ~ScriptedDialogs() override { setUi(nullptr); }

    Answer message(const QString &text, Buttons buttons, Answer defaultButton, Icon icon,
                   const QString &title) override {
        shown.append(text);
        if (answers.empty()) return defaultButton;
        const Answer a = answers.front();
        answers.pop_front();
        return a;
    }
    std::optional<QString> inputBox(const QString &title, const QString &prompt,
                                    const QString &value) override {
        inputsAsked.append(prompt);
        if (inputs.empty()) return std::nullopt;
        auto a = inputs.front();
        inputs.pop_front();
        return a;
    }
    std::optional<QString> openFile(const FileDialogSpec &spec) override { return nextFile(spec); }
    std::optional<QString> saveFile(const FileDialogSpec &spec) override { return nextFile(spec); }
    std::optional<QString> pickFolder(const QString &title, const QString &start) override {
        foldersAsked.append(title);
        if (folders.empty()) return std::nullopt;
        auto f = folders.front();
        folders.pop_front();
        return f;
    }
    bool showModal(WindowModel &window) override {
        ++modalsShown;
        if (modal.empty()) return false;
        auto handler = modal.front();
        modal.pop_front();
        return handler(window);
    }
    void standBy(int ms) override { ++standBys; }
    void status(const QString &text) override { statusTexts.append(text); }
    bool mainWindowUp() const override { return mainUp; }

    // Queues.
    void answer(Answer a) { answers.push_back(a); }
    void answerInput(std::optional<QString> text) { inputs.push_back(std::move(text)); }
    void answerFile(std::optional<QString> path) { files.push_back(std::move(path)); }
    void answerFolder(std::optional<QString> path) { folders.push_back(std::move(path)); }
    // The next modal window: the handler plays the person's part on the model
    // (it must be of type T) and returns what showModal returns.
    template <class T> void onModal(std::function<bool(T &)> handler) {
        modal.push_back([handler](WindowModel &w) {
            T *t = dynamic_cast<T *>(&w);
            if (!t) throw std::logic_error("unexpected modal window");
            return handler(*t);
        });
    }
    const QStringList &messagesShown() const { return shown; }

    QStringList shown, inputsAsked, statusTexts, foldersAsked;
    QList<FileDialogSpec> fileDialogs;
    std::deque<Answer> answers;
    std::deque<std::optional<QString>> inputs, files, folders;
    std::deque<std::function<bool(WindowModel &)>> modal;
    int modalsShown = 0;
    int standBys = 0;
    bool mainUp = false;

private:
    std::optional<QString> nextFile(const FileDialogSpec &spec) {
        fileDialogs.append(spec);
        if (files.empty()) return std::nullopt;
        auto f = files.front();
        files.pop_front();
        return f;
    }
};

} // namespace km::test
