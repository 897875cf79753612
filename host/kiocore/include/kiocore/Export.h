#pragma once

/// Marks what a shared library offers. Everything else stays hidden, so that libraries cannot
/// come to depend on each other's insides. Types that are thrown, or kept in an `any`, across
/// libraries need it too: their identity is their one exported type information.
#define KIO_EXPORT __attribute__((visibility("default")))
