#include "simulator/program/spawn.h"

namespace simulator {

morvane::TextArrayPtr ToTextArray(const std::vector<std::string>& words) {
    morvane::TextArrayPtr texts(g_new0(gchar*, words.size() + 1));
    for (std::size_t i = 0; i < words.size(); ++i) {
        texts.get()[i] = g_strdup(words[i].c_str());
    }
    return texts;
}

pid_t Start(const Spawn& spawn, morvane::ErrorPtr& error) {
    constexpr auto kSpawnFlags = G_SPAWN_SEARCH_PATH | G_SPAWN_DO_NOT_REAP_CHILD;
    const morvane::TextArrayPtr words = ToTextArray(spawn.words);
    GPid process = 0;
    const gboolean started = g_spawn_async_with_fds(
        nullptr, words.get(), spawn.environment,
        static_cast<GSpawnFlags>(kSpawnFlags | spawn.flags), spawn.prepare, spawn.data, &process,
        -1, spawn.output, spawn.errors, morvane::Out(error));
    return started != FALSE ? process : 0;
}

}  // namespace simulator
