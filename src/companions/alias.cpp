#include "companions/alias.h"

#include <stdlib.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string_view>
#include <system_error>

namespace fs = std::filesystem;

namespace {

// Removed when the process ends in an orderly way, whichever it is.
class AliasDirectory {
 public:
    ~AliasDirectory() {
        const std::lock_guard lock(mutex_);
        remove();
    }

    std::string add(const std::string &path, const std::string &extension) {
        const std::lock_guard lock(mutex_);
        std::error_code error;
        const fs::path target = fs::absolute(path, error);
        if (error || !make()) return "";
        const std::string name = directory_ + "/" + std::to_string(count_++) + extension;
        return symlink(target.c_str(), name.c_str()) == 0 ? name : "";
    }

    void drop(const std::string &name) {
        const std::lock_guard lock(mutex_);
        unlink(name.c_str());
    }

    void remove() {
        std::error_code ignored;
        if (!directory_.empty()) fs::remove_all(directory_, ignored);
    }

    // Whoever makes or drops a name, or leaves main, waits from now on.
    void remove_and_hold() {
        mutex_.lock();
        remove();
    }

 private:
    bool make() {
        if (!directory_.empty()) return true;
        const char *place = getenv("TMPDIR");
        // A percent sign is what aliases are there to avoid.
        const bool usable =
            place && place[0] == '/' && std::string_view(place).find('%') == std::string::npos;
        std::string pattern = std::string(usable ? place : "/tmp") + "/keldump-XXXXXX";
        if (!mkdtemp(pattern.data())) return false;
        directory_ = pattern;
        return true;
    }

    std::mutex mutex_;
    std::string directory_;
    uint64_t count_ = 0;
};

AliasDirectory directory;

}  // namespace

Alias::Alias(const std::string &path, const std::string &extension) : name_(directory.add(path, extension)) {}

Alias::~Alias() {
    if (!name_.empty()) directory.drop(name_);
}

void remove_aliases() { directory.remove_and_hold(); }
