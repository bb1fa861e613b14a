#pragma once
// A fresh installation root gets what every device has before the bundle first runs: the system
// frameworks the bundle opens by path, the installed stock apps, and Control Center's modules
// (the stock ones and the product's), enabled in a usual order. Seeding happens once per root and
// only creates what is missing: a file already there (the user's own module order, installed-apps
// list or module bundle) is never replaced, and what a user or a test changes afterwards stays.

#include <filesystem>

void seedRoot(const std::filesystem::path& root);
