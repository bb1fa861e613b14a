#pragma once
// A fresh installation root gets what every device has before the bundle first runs: the system
// frameworks the bundle opens by path. Seeding happens once per root; what a user or a test changes
// afterwards stays.

#include <filesystem>

void seedRoot(const std::filesystem::path& root);
