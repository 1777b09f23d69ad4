#include "quorda/rtl/replace_file.h"

#include "quorda/rtl/in_out_error.h"

#include <cerrno>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace quorda {

namespace fs = std::filesystem;

namespace {

// Removes the temporary file unless it was renamed.
class TTempFile {
public:
    // Target as the caller named it; Path made absolute.
    TTempFile(const std::string& Target, const fs::path& Path) {
        std::string name = (Path.parent_path() / ("." + Path.filename().string() + ".XXXXXX")).string();
        const int fd = mkstemp(name.data());
        if (fd < 0) {
            RaiseInOutError("Cannot write file", Target, errno);
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
    TTempFile temp(Target, target);
    Write(temp.Name().string());
    std::error_code error;
    const fs::file_status existing = fs::status(target, error);
    fs::permissions(temp.Name(), fs::exists(existing) ? existing.permissions() : NewFilePermissions(), error);
    if (std::rename(temp.Name().c_str(), target.c_str()) != 0) {
        RaiseInOutError("Cannot write file", Target, errno);
    }
    temp.Release();
}

} // namespace quorda
