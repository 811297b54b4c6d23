// A folder for the files of one test.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace test {

/// Makes an empty folder and removes it with all that is in it.
class Scratch
{
public:
    Scratch()
    {
        std::string pattern = testing::TempDir() + "/tarn-XXXXXX";
        if (!mkdtemp(pattern.data()))
            throw std::runtime_error("no temporary folder");
        folder_ = pattern;
    }
    ~Scratch() { std::filesystem::remove_all(folder_); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    std::string path(const std::string& name) const { return (folder_ / name).string(); }

    std::string write(const std::string& name, const std::string& text) const
    {
        std::ofstream(path(name)) << text;
        return path(name);
    }

    std::string read(const std::string& name) const
    {
        std::ostringstream text;
        text << std::ifstream(path(name)).rdbuf();
        return text.str();
    }

private:
    std::filesystem::path folder_;
};

} // namespace test
