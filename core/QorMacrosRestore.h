// No include guard: closes the bracket that QorMacrosSave.h opens, giving the program its macros back.
#pragma pop_macro("True")
#pragma pop_macro("Success")
#pragma pop_macro("Status")
#pragma pop_macro("None")
#pragma pop_macro("False")
#pragma pop_macro("Complex")
#pragma pop_macro("Bool")
#pragma pop_macro("Always")
