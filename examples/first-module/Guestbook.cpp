#include "Guestbook.h"

#include <cstdio>

Guestbook::Guestbook() { std::puts("guest book: opened"); }
Guestbook::~Guestbook() { std::puts("guest book: closed"); }

void Guestbook::sign(const std::string& name) { names_ += names_.empty() ? name : ", " + name; }
const std::string& Guestbook::names() const { return names_; }
