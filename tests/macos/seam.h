#pragma once

#include <gtest/gtest.h>

#include <cstddef>

#include "fakes/fakes.h"

/// A test of adapters against the faked system: whatever a test made the adapters take, they have
/// given back at its end, objects and descriptors alike.
class Seam : public testing::Test {
 protected:
  Seam();  // before the members of a test, which may take things too
  void TearDown() override;

 private:
  static std::size_t openDescriptors();

  const std::size_t descriptorsBefore_;
};
