#include "documents/document.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace morvane_test {
namespace {

using Directory = std::filesystem::recursive_directory_iterator;

bool IsOutside(const std::filesystem::path& path) {
    const std::string name = path.filename();
    return name == "build" || (name.front() == '.' && name != ".ci");
}

}  // namespace

std::string SourcePath(const std::string& name) {
    return std::string(MORVANE_SOURCE_DIR "/") + name;
}

std::string ReadSource(const std::string& name) {
    const std::ifstream file(SourcePath(name));
    std::ostringstream text;
    text << file.rdbuf();
    if (!file || !text) throw std::runtime_error("cannot read " + name);
    return text.str();
}

std::vector<std::string> FindSources(const std::string& pattern) {
    const std::regex wanted(pattern);
    std::vector<std::string> names;
    for (Directory entry(MORVANE_SOURCE_DIR); entry != Directory(); ++entry) {
        if (IsOutside(entry->path())) {
            entry.disable_recursion_pending();
            continue;
        }
        const std::string name = entry->path().lexically_relative(MORVANE_SOURCE_DIR);
        if (entry->is_regular_file() && std::regex_search(name, wanted)) names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> FindAll(const std::string& text, const std::string& pattern) {
    const std::regex wanted(pattern);
    std::vector<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), wanted), end; match != end; ++match) {
        const auto is_set = [](const std::ssub_match& group) { return group.matched; };
        const auto group = std::find_if(std::next(match->begin()), match->end(), is_set);
        if (group != match->end()) found.push_back(group->str());
    }
    return found;
}

Names FindNames(const std::string& text, const std::string& pattern) {
    const std::vector<std::string> found = FindAll(text, pattern);
    return {found.begin(), found.end()};
}

std::string AsTestName(const std::string& text) {
    return std::regex_replace(text, std::regex("\\W"), "_");
}

std::string FencedBlock(const std::string& markdown, const std::string& kind) {
    const std::string fence = "\n```" + kind + "\n";
    const std::size_t found = markdown.find(fence);
    const std::size_t end = markdown.find("\n```\n", found + 1);
    if (found == std::string::npos || end == std::string::npos)
        throw std::runtime_error("no block of " + kind);
    const std::size_t begin = found + fence.size();
    return markdown.substr(begin, end + 1 - begin);
}

}  // namespace morvane_test
