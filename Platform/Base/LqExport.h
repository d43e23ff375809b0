#pragma once

// Every library of the project is built with hidden visibility; this marks
// what each one exports.
#define LQ_EXPORT __attribute__((visibility("default")))
