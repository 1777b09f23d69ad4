#include "replace_file.h"

#include <cerrno>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace quorda::browser {

namespace fs = std::filesystem;

namespace {

// Removes the temporary file unless it was renamed.
class TTempFile {
public:
    explicit TTempFile(const fs::path& Target) {
        std::string name = (Target.parent_path() / ("." + Target.filename().string() + ".XXXXXX")).string();
        const int fd = mkstemp(name.data());
        if (fd < 0) {
            throw fs::filesystem_error("cannot create a file beside", Target,
                                       std::error_code(errno, std::generic_category()));
        }
        close(fd);
        FName = name;
    }
    ~TTempFile() {
        if (!FName.empty()) {
            std::error_code ignored;
            fs::remove(FName, ignored);
        }
    }
    TTempFile(const TTempFile&) = delete;
    TTempFile& operator=(const TTempFile&) = delete;

    const fs::path& Name() const { return FName; }
    void Release() { FName.clear(); }

private:
    fs::path FName;
};

fs::perms NewFilePermissions() {
    const mode_t mask = umask(0);
    umask(mask);
    return static_cast<fs::perms>(0666 & ~mask);
}

} // namespace

void ReplaceFile(const std::string& Target, const std::function<void(const std::string& TempName)>& Write) {
    const fs::path target = fs::absolute(Target);
    TTempFile temp(target);
    Write(temp.Name().string());
    std::error_code error;
    const fs::file_status existing = fs::status(target, error);
    fs::permissions(temp.Name(), fs::exists(existing) ? existing.permissions() : NewFilePermissions());
    fs::rename(temp.Name(), target);
    temp.Release();
}

} // namespace quorda::browser
