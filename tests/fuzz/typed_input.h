#pragma once

#include "support/file_descriptor.h"

#include <string>

namespace morvane_fuzz {

/// Standard input gives this text, and then its end, while this lives.
class TypedInput {
  public:
    explicit TypedInput(const std::string& text);
    TypedInput(const TypedInput&) = delete;
    TypedInput& operator=(const TypedInput&) = delete;
    ~TypedInput();

  private:
    morvane_test::FileDescriptor memory_;
    morvane_test::FileDescriptor terminal_;
};

}  // namespace morvane_fuzz
