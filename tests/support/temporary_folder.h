#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace fernlow::test {

/// A new folder with a short path (socket paths are limited), removed with all in it.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = "/tmp/fernlow-test-XXXXXX";
        path_ = ::mkdtemp(pattern.data());
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    [[nodiscard]] std::string file(const std::string& name) const { return path_ + "/" + name; }
    [[nodiscard]] const std::string& path() const { return path_; }
    /// What a file in it holds; nothing when there is no such file.
    [[nodiscard]] std::string contents(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(file(name)).rdbuf();
        return text.str();
    }

private:
    std::string path_;
};

} // namespace fernlow::test
