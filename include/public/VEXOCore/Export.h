#pragma once

/// Marks what a vexo library offers to its users; everything else stays hidden.
#define VEXO_API __attribute__((visibility("default")))
