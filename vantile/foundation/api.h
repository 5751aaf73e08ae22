#pragma once

/// Marks what a host may link to. Everything else is hidden: the libraries are built with
/// -fvisibility=hidden.
#define VANTILE_API __attribute__((visibility("default")))
