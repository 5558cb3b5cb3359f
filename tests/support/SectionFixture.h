// A section window's world for a test: a fresh store, a scripted person, a
// shell that records what the section asked of the main window, and a clock
// that stands still until the test moves it.
#pragma once

#include "platform/Clock.h"
#include "shell/SectionContext.h"
#include "store/CATEGORIES.h"
#include "support/FakeShell.h"
#include "support/ScriptedDialogs.h"
#include "support/StoreFixture.h"

namespace km::test {

class SectionFixture : public StoreFixture {
protected:
    void SetUp() override {
        StoreFixture::SetUp();
        Clock::setInstance(&clock);
        CATEGORIES::state() = {};
    }
    void TearDown() override {
        Clock::setInstance(nullptr);
        StoreFixture::TearDown();
    }
    SectionContext context() { return SectionContext{ui, shell, store(), clock, QLocale(QLocale::English)}; }

    ScriptedDialogs ui;
    FakeShell shell;
    FixedClock clock{QDateTime(QDate(2024, 5, 6), QTime(9, 30))};
};

} // namespace km::test
