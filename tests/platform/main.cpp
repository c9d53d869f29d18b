// The test program runs inside a QApplication on the offscreen platform, with the
// settings folder moved away from the user's own.

#include "qms/QmsCommands.h"

#include <QApplication>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const std::filesystem::path config =
        std::filesystem::temp_directory_path() / ("qms-platform-config-" + std::to_string(::getpid()));
    ::setenv("XDG_CONFIG_HOME", config.c_str(), 1);

    QApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    QmsRegisterAllTypes();
    const int result = RUN_ALL_TESTS();
    std::filesystem::remove_all(config);
    return result;
}
