#include "simulator/program/server.h"

#include <cstdio>
#include <stdexcept>
#include <utility>

namespace simulator {

Server::Server(const std::string& address, const Options& options, Commands::Sink log)
    : daemon_(address, options), commands_(daemon_, std::move(log)) {
    daemon_.OnBusLost([this] { OnBusLost(); });
    OfferControl(address, options.instance);
}

Server::~Server() {
    daemon_.OnBusLost(nullptr);
}

void Server::OfferControl(const std::string& address, const std::string& instance) {
    try {
        control_.emplace(address, instance, daemon_,
                         [this](const std::string& line) { return Execute(line); });
        file_.emplace(Running{{}, {}, daemon_.BusName(), control_->bus_name(), address});
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "morvane-simulator: It cannot be controlled by --tell: %s\n",
                     failure.what());
    }
}

/// Runs in the daemon's thread.
void Server::OnBusLost() {
    const auto stop = [](gpointer self) -> gboolean {
        auto& server = *static_cast<Server*>(self);
        server.bus_is_lost_ = true;
        server.Stop();
        return G_SOURCE_REMOVE;
    };
    g_idle_add(stop, this);
}

std::string Server::Execute(const std::string& line) {
    std::string answer = commands_.Execute(line);
    if (commands_.IsQuitting()) {
        Stop();
    }
    return answer;
}

void Server::Run() {
    if (!commands_.IsQuitting()) {
        g_main_loop_run(loop_.get());
    }
    if (bus_is_lost_) {
        throw std::runtime_error("The connection to the bus was lost");
    }
}

}  // namespace simulator
