// Whether a stream of the process shows colours.

#pragma once

/// Thread safety: any thread, while nobody changes the environment.
struct VRKTerminal {
  /// Whether the descriptor is a terminal that TERM does not call dumb, and NO_COLOR is unset or empty.
  static bool wantsColors(int descriptor);
};
