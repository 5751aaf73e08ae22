// AppKit, as far as the macOS adapters use it: none of its functions. They find NSWorkspace by its
// name once the framework is loaded, so that linking to it is all it takes.
#pragma once
