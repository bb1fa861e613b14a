#pragma once
// A fresh installation root gets what every device has before the bundle first runs: the system
// frameworks the bundle opens by path, the installed stock apps, and Control Center's modules
// (the stock ones and the product's), enabled in a usual order. Seeding happens once per root; what
// a user or a test changes afterwards stays.

#include <filesystem>

void seedRoot(const std::filesystem::path& root);
