#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace quorda::testing_support {

// Points $XDG_CONFIG_HOME at a fresh temporary folder for the lifetime of the object, so settings
// files of a test never meet the user's own or another test's.
class TTemporaryConfigHome {
public:
    TTemporaryConfigHome() {
        std::string Template = (std::filesystem::temp_directory_path() / "quorda-config-XXXXXX").string();
        FFolder = ::mkdtemp(Template.data());
        if (const char* Old = std::getenv("XDG_CONFIG_HOME")) {
            FOld = Old;
            FHadOld = true;
        }
        ::setenv("XDG_CONFIG_HOME", FFolder.c_str(), 1);
    }
    ~TTemporaryConfigHome() {
        if (FHadOld) {
            ::setenv("XDG_CONFIG_HOME", FOld.c_str(), 1);
        } else {
            ::unsetenv("XDG_CONFIG_HOME");
        }
        std::error_code Ignored;
        std::filesystem::remove_all(FFolder, Ignored);
    }
    TTemporaryConfigHome(const TTemporaryConfigHome&) = delete;
    TTemporaryConfigHome& operator=(const TTemporaryConfigHome&) = delete;

    const std::filesystem::path& Folder() const { return FFolder; }

private:
    std::filesystem::path FFolder;
    std::string FOld;
    bool FHadOld = false;
};

} // namespace quorda::testing_support
