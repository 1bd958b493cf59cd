// No include guard: this file and QorMacrosRestore.h bracket each family header, so that a program may
// include <X11/Xlib.h> (whose macros Always, Bool, Complex, False, None, Status, Success and True are
// names the library's declarations use) before <qor.h>. The program's macros are set aside here and
// put back by QorMacrosRestore.h; brackets nest, as family headers include each other.
#pragma push_macro("Always")
#pragma push_macro("Bool")
#pragma push_macro("Complex")
#pragma push_macro("False")
#pragma push_macro("None")
#pragma push_macro("Status")
#pragma push_macro("Success")
#pragma push_macro("True")
#undef Always
#undef Bool
#undef Complex
#undef False
#undef None
#undef Status
#undef Success
#undef True
