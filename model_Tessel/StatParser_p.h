#pragma once

#include <model_Tessel/StatInput.h>

#include <QtGlobal>

#include <readstat.h>

#include <exception>
#include <memory>
#include <utility>

// Entry point of libreadstat for one kind of file.
using StatParse = readstat_error_t (*)(readstat_parser_t*, const char*, void*);

// A libreadstat parser for one parse of a file, without handlers at first.
class StatParser {
public:
    // Reads from input, which has to outlive it; null: from the file that the parse names.
    explicit StatParser(TStatInput* input = nullptr)
        : m_input(input ? input : &m_ownInput)
        , m_parser(readstat_parser_init())
    {
        Q_CHECK_PTR(m_parser.get());
        m_input->attachTo(m_parser.get());
    }

    readstat_parser_t* get() const
    {
        return m_parser.get();
    }

    bool fileEndedEarly() const
    {
        return m_input->endedEarly();
    }

    const TStatInput& input() const
    {
        return *m_input;
    }

private:
    struct Free {
        void operator()(readstat_parser_t* parser) const
        {
            readstat_parser_free(parser);
        }
    };

    Q_DISABLE_COPY(StatParser)

    TStatInput m_ownInput; // outlives the parser that reads it
    TStatInput* m_input;
    std::unique_ptr<readstat_parser_t, Free> m_parser;
};

// Runs the steps of callbacks: no exception may cross the frames of libreadstat, so one ends the
// parse and is thrown again after it.
class CallbackGuard {
public:
    template <typename Step> int run(Step step) noexcept
    {
        try {
            step();
            return READSTAT_HANDLER_OK;
        } catch (...) {
            m_failure = std::current_exception();
            return READSTAT_HANDLER_ABORT;
        }
    }

    void rethrow()
    {
        if (m_failure)
            std::rethrow_exception(std::exchange(m_failure, nullptr));
    }

private:
    std::exception_ptr m_failure;
};
