/// \file cafe.h
/// \brief The coffee maker: “brew”, a × b cups.

namespace cafe {

/// A cup of coffee — une tasse de café.
///
/// Sizes: petit, moyen, grand. See \ref foam "the foam" and \ref beans.
class Cup {
 public:
  /// Fills the cup with \p ml millilitres (Größe in ml).
  void Fill(int ml);
};

/// Brews a coffee; returns the greeting “Grüß Gott” — 你好.
/// \code
///     indented code, first line
/// \endcode
const char* brew();

}  // namespace cafe
