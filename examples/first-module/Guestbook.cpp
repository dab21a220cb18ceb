#include "Guestbook.h"

#include <cstdio>

using Quend::Framework::Management::MemoryManager::IRegisteredObject;

namespace {

class PaperGuestbook final : public Guestbook {
 public:
    PaperGuestbook() { std::puts("guest book: opened"); }
    ~PaperGuestbook() override { std::puts("guest book: closed"); }

    void sign(const std::string& name) override { text += text.empty() ? name : ", " + name; }
    const std::string& names() const override { return text; }

 private:
    std::string text;
};

}  // namespace

IRegisteredObject* makeGuestbook() { return new PaperGuestbook; }
