#pragma once
// The two places batches live, for tests that run on both: the SQLite file and the server.
#include "pg_test_server.h"

#include <QString>
#include <gtest/gtest.h>
#include <ostream>
#include <string>

inline void PrintTo(const QString& s, std::ostream* os) {
    *os << '"' << s.toStdString() << '"';
}

enum class backend { file, server };

inline std::string backend_name(const ::testing::TestParamInfo<backend>& info) {
    return info.param == backend::file ? "file" : "server";
}

#define LUMORA_ON_BOTH_BACKENDS(suite)                                                                       \
    INSTANTIATE_TEST_SUITE_P(store, suite, ::testing::Values(backend::file, backend::server), backend_name)
