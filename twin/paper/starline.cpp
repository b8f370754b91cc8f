#include "twin/paper/language.h"
namespace zemrak::paper {
std::unique_ptr<PrinterLanguage> makeStarLine(int dots, Listener &listener) { return makeEscPos(dots, listener); }
}
