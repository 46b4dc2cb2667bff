// Test entry for model code that runs Qt's event loop (queued deliveries from
// pool threads, timers). Temporary files go to a private folder, so that tests
// can tell which ones the workspace left behind.
#include <QCoreApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <cstdlib>

int main(int argc, char** argv) {
    // The conversion cache of each test lives and dies with it, never in the
    // user's own cache folder, and beside the temporary folder, not in it.
    QTemporaryDir cache;
    if (cache.isValid()) setenv("XDG_CACHE_HOME", cache.path().toLocal8Bit().constData(), 1);
    QTemporaryDir temporal;
    if (temporal.isValid()) setenv("TMPDIR", temporal.path().toLocal8Bit().constData(), 1);
    QCoreApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
