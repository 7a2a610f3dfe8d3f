// A host application that is controlled by JSON lines on its standard input.

#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>

#include "Platform/DispatchQueue.h"
#include "Simulator/Phone/LineReader.h"
#include "Simulator/Phone/Phone.h"

namespace {

using vorlane::phone::LineReader;
using vorlane::phone::Phone;
using vorlane::phone::PhoneOptions;

void run(Phone& phone) {
    const auto mainQueue = phone.device().mainQueue();
    LineReader reader([mainQueue] { mainQueue->post([] {}); });
    while (!phone.hasQuit()) {
        phone.device().runMainQueue();
        const auto line = reader.next();
        if (!line) {
            phone.device().waitForMainQueue();
        } else if (line->isEnd) {
            return;
        } else {
            phone.take(line->text);
        }
    }
}

}  // namespace

int main(int count, char** arguments) {
    // A write to a closed pipe fails instead.
    std::signal(SIGPIPE, SIG_IGN);
    std::unique_ptr<Phone> phone;
    try {
        const auto options = PhoneOptions::parse(count, arguments);
        if (options.wantsHelp) return std::fputs(PhoneOptions::usage(), stdout) < 0 ? 1 : 0;
        phone = std::make_unique<Phone>(options);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "vorlane-phone: %s\n%s", exception.what(), PhoneOptions::usage());
        return 2;
    }
    try {
        run(*phone);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "vorlane-phone: %s\n", exception.what());
        return 1;
    }
    return 0;
}
