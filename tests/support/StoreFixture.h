// A fresh store in a temporary folder, opened as the session's store, with a
// random key table loaded. Everything is unloaded and removed again after the test.
#pragma once

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "store/CRY.h"
#include "store/db.h"

namespace km::test {

class StoreFixture : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        path = dir.filePath(QStringLiteral("test.kmd"));
        StoreDb::CreateDatabase(path);
        db::state().StoreDb = StoreDb::OpenDatabase(path, true, false);
        CRY::LoadKeyTable(CRY::RandomBytes(270));
    }
    void TearDown() override {
        CRY::UnloadKeyTable();
        db::state().StoreDb.reset();
    }
    StoreDb &store() { return *db::state().StoreDb; }
    // Reopens the file, for tests that look at what was committed.
    void reopen() {
        db::state().StoreDb.reset();
        db::state().StoreDb = StoreDb::OpenDatabase(path, true, false);
    }

    QTemporaryDir dir;
    QString path;
};

} // namespace km::test
