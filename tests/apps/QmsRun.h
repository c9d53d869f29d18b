#pragma once

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

// Runs the qms program with a shell command line and collects what it printed.
struct QmsResult {
    int exitCode = -1;
    std::string out;
    std::string err;
};

inline QmsResult RunQms(const std::string& arguments, const std::filesystem::path& scratch) {
    const std::filesystem::path outFile = scratch / "stdout.txt";
    const std::filesystem::path errFile = scratch / "stderr.txt";
    // Settings go to the scratch folder, never to the user's own configuration.
    const std::string command = "XDG_CONFIG_HOME='" + (scratch / "config").string() + "' " + QMS_BINARY +
                                " " + arguments + " >" + outFile.string() + " 2>" + errFile.string() +
                                " </dev/null";
    const int status = std::system(command.c_str());
    QmsResult result;
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    auto slurp = [](const std::filesystem::path& p) {
        std::ifstream in(p, std::ios::binary);
        std::stringstream s;
        s << in.rdbuf();
        return s.str();
    };
    result.out = slurp(outFile);
    result.err = slurp(errFile);
    return result;
}

// A fresh folder for one test, removed afterwards.
class ScratchFolder {
public:
    explicit ScratchFolder(const std::string& name) {
        path_ = std::filesystem::temp_directory_path() / ("qms-" + name + "-" + std::to_string(::getpid()));
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
    }
    ~ScratchFolder() { std::filesystem::remove_all(path_); }
    const std::filesystem::path& Path() const { return path_; }
    std::string Quoted(const std::string& relative = "") const {
        return "'" + (path_ / relative).string() + "'";
    }

private:
    std::filesystem::path path_;
};

// A test over the project "Robot" that `qms new` makes in a fresh folder.
class QmsRobotTest : public ::testing::Test {
protected:
    explicit QmsRobotTest(const std::string& folder) : dir(folder) {}
    void SetUp() override { ASSERT_EQ(RunQms("new " + dir.Quoted() + " Robot", dir.Path()).exitCode, 0); }
    // `qms COMMAND ROBOT.qmp REST`, where COMMAND may hold a verb.
    QmsResult Run(const std::string& command, const std::string& rest) {
        return RunQms(command + " " + dir.Quoted("Robot/Robot.qmp") + " " + rest, dir.Path());
    }
    std::filesystem::path Project() const { return dir.Path() / "Robot"; }
    std::filesystem::path ProjectFile() const { return Project() / "Robot.qmp"; }

    ScratchFolder dir;
};
