#include "ports/linux/PlistBundles.h"

#include <system_error>

#include "ports/linux/PlistBundle.h"

namespace zentavo::linux_port {
namespace {

constexpr int deepestExecutable = 3;

std::filesystem::path executable() {
    std::error_code error;
    std::string path = std::filesystem::read_symlink("/proc/self/exe", error);
    // What the kernel says of a program whose file was replaced by an update while it runs.
    constexpr std::string_view gone = " (deleted)";
    if (path.ends_with(gone)) {
        path.resize(path.size() - gone.size());
    }
    return path;
}

std::string absolutePath(std::filesystem::path path) {
    std::error_code error;
    path = std::filesystem::absolute(path, error).lexically_normal();
    if (!path.has_filename() && path.has_relative_path()) {
        path = path.parent_path();
    }
    return path;
}

} // namespace

PlistBundles::PlistBundles(std::filesystem::path mainBundle) : mainPath_(std::move(mainBundle)) {}

PlistBundles::~PlistBundles() = default;

std::filesystem::path PlistBundles::bundleOf(const std::filesystem::path& executable) {
    std::filesystem::path folder = executable.parent_path();
    for (int depth = 0; depth < deepestExecutable && folder.has_relative_path(); ++depth) {
        const auto extension = folder.extension();
        if (extension == ".app" || extension == ".appex") {
            return folder;
        }
        folder = folder.parent_path();
    }
    return executable.parent_path();
}

std::shared_ptr<const platform::Bundle> PlistBundles::main() {
    std::call_once(opened_, [this] {
        main_ =
            std::make_shared<const PlistBundle>(absolutePath(mainPath_.empty() ? bundleOf(executable()) : mainPath_));
    });
    return main_;
}

std::shared_ptr<const platform::Bundle> PlistBundles::open(std::string_view path) {
    std::error_code error;
    if (path.empty() || path.find('\0') != std::string_view::npos || !std::filesystem::is_directory(path, error)) {
        return nullptr;
    }
    return std::make_shared<const PlistBundle>(absolutePath(path));
}

} // namespace zentavo::linux_port
