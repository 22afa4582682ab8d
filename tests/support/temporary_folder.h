#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

namespace fernlow::test {

/// A new folder whose path contains no links and is short, because socket paths are limited. The
/// destructor removes the folder with its contents.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = "/tmp/fernlow-test-XXXXXX";
        path_ = std::filesystem::canonical(::mkdtemp(pattern.data()));
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    [[nodiscard]] const std::string& path() const { return path_; }
    /// Returns the path of a file or folder with this relative path, which need not exist.
    [[nodiscard]] std::string file(const std::string& name) const { return path_ + "/" + name; }
    [[nodiscard]] bool contains(const std::string& name) const {
        return std::filesystem::exists(file(name));
    }
    /// Returns the contents of a file, or an empty text if there is no such file.
    [[nodiscard]] std::string contents(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(file(name)).rdbuf();
        return text.str();
    }
    /// Writes a file and creates the folders it needs.
    void write(const std::string& name, std::string_view text) const {
        std::filesystem::create_directories(std::filesystem::path(file(name)).parent_path());
        std::ofstream(file(name)) << text;
    }
    /// Writes an executable script for /bin/sh.
    void writeScript(const std::string& name, std::string_view body) const {
        write(name, "#!/bin/sh\n" + std::string(body));
        std::filesystem::permissions(file(name), std::filesystem::perms::owner_all);
    }

private:
    std::string path_;
};

} // namespace fernlow::test
