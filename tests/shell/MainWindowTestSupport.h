// The main window headless: a store in a temporary folder that also serves as
// home, settings folder and runtime folder; a clock that stands still until a
// test moves it; a clipboard that records what was put on it; and a desktop
// whose event rounds move the clock, as a running event loop would.
#pragma once

#include <QLockFile>

#include "platform/Clock.h"
#include "platform/Environment.h"
#include "shell/SessionGuards.h"
#include "shell/frmMDI.h"
#include "shell/frmSplash.h"
#include "store/LoginTestSupport.h"
#include "ui/Services.h"

namespace km::test {

class RecordingClipboard : public ClipboardService {
public:
    bool hasText() const override { return !current.isEmpty(); }
    QString text() const override { return current; }
    void setText(const QString &text, bool secret) override {
        current = text;
        written.append(text);
        allSecret = allSecret && secret;
    }
    void clear() override { current.clear(); }
    void clearSelection() override { ++selectionClears; }

    QString current;
    int selectionClears = 0;
    QStringList written;
    bool allSecret = true;
};

class SteppingDesktop : public DesktopService {
public:
    explicit SteppingDesktop(FixedClock &clock) : clock(clock) {}
    void setWaitCursor(bool on) override { waitCursor = on; }
    bool openUrl(const QString &url) override {
        opened.append(url);
        return false;
    }
    void processEvents() override {
        clock.advanceMSecs(100);
        if (duringEvents) duringEvents();
    }

    FixedClock &clock;
    bool waitCursor = false;
    QStringList opened;
    std::function<void()> duringEvents;
};

// A section window that keeps a log of its life in the test.
struct SectionLog {
    int loads = 0, unloads = 0, hideShows = 0;
    QStringList commands;
};

class LoggingSection : public SectionWindow {
public:
    LoggingSection(int code, SectionLog &log) : m_code(code), m_log(log) {}
    int sectionCode() const override { return m_code; }
    QString sectionMenu() const override { return m_code == 15 ? QStringLiteral("mnuTodo") : QString(); }
    void Form_Load() override { ++m_log.loads; }
    void Form_Unload() override { ++m_log.unloads; }
    bool menuCommand(const QString &name, int index, const QString &arg) override {
        m_log.commands << QStringLiteral("%1(%2)%3").arg(name).arg(index).arg(arg);
        return true;
    }
    void HideShow() override { ++m_log.hideShows; }

private:
    int m_code;
    SectionLog &m_log;
};

class MainWindowFixture : public StoreLifeFixture {
protected:
    static constexpr const char *kPass = "correct horse battery";

    void SetUp() override {
        StoreLifeFixture::SetUp();
        oldHome = qgetenv("HOME");
        oldConfig = qgetenv("XDG_CONFIG_HOME");
        qputenv("HOME", dir.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", dir.filePath(QStringLiteral("config")).toUtf8());
        SetRuntimeFolder(dir.path());
        Clock::setInstance(&clock);
        setClipboard(&clip);
        setDesktop(&desk);
        SessionGuards::state() = {};
        // A test may run the whole set-up again: nothing of the last run stays.
        ui.shown.clear();
        ui.answers.clear();
        ui.modal.clear();
        ui.modalsShown = 0;
        ui.mainUp = true;
        unloadRequests = ends = tipsShown = 0;
        modalUp = false;
        w = std::make_unique<frmMDI>();
        w->unloadWindow = [this] {
            ++unloadRequests;
            if (modalUp) return false;
            w->Form_QueryUnload();
            return true;
        };
        w->endProgram = [this] { ++ends; };
        w->showTip = [this] { ++tipsShown; };
    }
    void TearDown() override {
        w.reset();
        frmMDI::UnregisterSections();
        SetRuntimeFolder(QString());
        setClipboard(nullptr);
        setDesktop(nullptr);
        Clock::setInstance(nullptr);
        SessionGuards::state() = {};
        qputenv("HOME", oldHome);
        qputenv("XDG_CONFIG_HOME", oldConfig);
        StoreLifeFixture::TearDown();
    }

    // A closed store at path, named as the last one used: Form_Load opens it.
    void storeIsLastUsed() {
        createClosed(QString::fromLatin1(kPass));
        RegWrite(QStringLiteral("MostRecentFiles\\1"), path);
    }
    // The start with the passphrase typed at the prompt.
    bool startOpen() {
        storeIsLastUsed();
        type(QString::fromLatin1(kPass));
        return w->Form_Load();
    }
    void registerLogging(int code, SectionLog &log) {
        frmMDI::RegisterSection(code, [code, &log](const SectionContext &) {
            return std::make_unique<LoggingSection>(code, log);
        });
    }
    int buttonOf(int code) const {
        for (size_t i = 0; i < w->optSection.size(); ++i)
            if (w->optSection[i].code == code) return static_cast<int>(i) + 1;
        return 0;
    }

    FixedClock clock{QDateTime(QDate(2024, 3, 1), QTime(9, 0))};
    RecordingClipboard clip;
    SteppingDesktop desk{clock};
    std::unique_ptr<frmMDI> w;
    bool modalUp = false;
    int unloadRequests = 0, ends = 0, tipsShown = 0;
    QByteArray oldHome, oldConfig;
};

} // namespace km::test
