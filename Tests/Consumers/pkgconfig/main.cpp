// SPDX-License-Identifier: MIT
// Formats a wide text and hands it to a listener.

#include <cstdio>

#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeRTBSignal.h"

struct Printer {
    int lines = 0;

    void print(const zeString::IString& text) {
        std::puts(text.asUTF8());
        ++lines;
    }
};

int main() {
    Printer printer;
    zeRTB::SignalArg<const zeString::IString&> message;
    message.connect(&printer, &Printer::print);

    zeString::IString text;
    text.format(L"%S: %d", L"Schön", 3);
    message.send(text);
    return printer.lines == 1 && text.length() == 8 ? 0 : 1;
}
