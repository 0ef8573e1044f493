#pragma once

#include "simulator/daemon.h"
#include "simulator/test_client.h"
#include "support/private_bus.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <exception>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace simulator {

/// The result of `TestClient::TakeSignals`.
using Signals = std::vector<std::string>;

/// The message of the exception that `action` throws, or an empty text.
template <typename Action>
std::string FailureOf(const Action& action) {
    try {
        action();
    } catch (const std::exception& failure) {
        return failure.what();
    }
    return {};
}

/// A daemon on a bus of its own, with a directory for pulled files.
class SimulatorTest : public testing::Test {
  protected:
    static constexpr char kPhone[] = "02:00:5E:10:00:01";
    static constexpr char kPhonePath[] = "/com/veltrisonix/hci0/dev_02_00_5E_10_00_01";
    static constexpr char kSession[] = "/com/veltrisonix/obex/client/session0";
    static constexpr char kTransfer[] = "/com/veltrisonix/obex/client/session0/transfer0";
    /// The phone book interface in the form that `TestClient` expects.
    static constexpr char kAccess[] = "obex.PhonebookAccess1";

    /// The default options without delays.
    static Options Quick() {
        Options options;
        options.announce_delay = std::chrono::milliseconds(0);
        options.start_delay = std::chrono::milliseconds(0);
        options.rate = 0;
        return options;
    }
    /// One phone; transfers advance only at the test's request.
    static Options ByHand() {
        Options options = Options::Scripted();
        options.phones = 1;
        return options;
    }

    void Start(Options options) {
        options.directory = directory_.Path();
        daemon_.emplace(bus_.Address(), options);
        client_.emplace(bus_.Address());
    }
    std::string CreateSession(const std::string& address = kPhone) {
        return client_->Call(
            kClientPath, "obex.Client1.CreateSession",
            "('" + address + "', {'Target': <'0000112f-0000-1000-8000-00805f9b34fb'>})");
    }
    /// Calls a method of the phone book interface of the first session.
    std::string Access(const std::string& method, const std::string& arguments = "()") {
        return client_->Call(kSession, std::string(kAccess) + "." + method, arguments);
    }
    /// Starts the daemon and opens a session.
    void StartSession(const Options& options) {
        Start(options);
        CreateSession();
    }
    /// Also selects the internal phone book.
    void StartSelected(const Options& options) {
        StartSession(options);
        Access("Select", "('int', 'pb')");
        client_->TakeSignals();
    }
    std::string ReadFile(const std::string& name) const {
        std::ifstream file(directory_.File(name), std::ios::binary);
        std::ostringstream content;
        content << file.rdbuf();
        return content.str();
    }

    /// "com.veltrisonix.Error.<name>: <message>"
    static std::string Error(const std::string& name, const std::string& message) {
        return "com.veltrisonix.Error." + name + ": " + message;
    }
    static std::string InvalidArguments(const std::string& message) {
        return Error("InvalidArguments", message);
    }

    /// "/path PropertiesChanged('com.veltrisonix.<interface>', {<changes>}, @as [])"
    static std::string Changed(const std::string& path, const std::string& interface,
                               const std::string& changes) {
        return path + " PropertiesChanged('com.veltrisonix." + interface + "', {" + changes +
               "}, @as [])";
    }

    TestClient& client() { return *client_; }
    Daemon& daemon() { return *daemon_; }

    morvane_test::TemporaryDirectory directory_;
    morvane_test::PrivateBus bus_;
    std::optional<Daemon> daemon_;
    std::optional<TestClient> client_;
};

}  // namespace simulator
