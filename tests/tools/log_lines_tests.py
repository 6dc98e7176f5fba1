#!/usr/bin/env python3
"""Tests of tools/log-lines, each on a small tree of its own."""
import pathlib
import subprocess
import tempfile
import unittest

TOOL = pathlib.Path(__file__).resolve().parents[2] / 'tools/log-lines'

SOURCE = '''
#include "frame/Log.h"

namespace velora {

bool Panel::Read(int mode) {
  constexpr FunctionLog log("Panel::Read");
  log.Info(L"mode:", mode);
  if (mode < 0) {
    log.Error(L"bad mode:", mode, L", type:", header_.GetType());
    return false;
  }
  return true;
}

}  // namespace velora
'''
INFO = ('1 info', 'mode:{mode}(Panel::Read)')
ERROR = ('3 error', 'bad mode:{mode}, type:{header.GetType}(Panel::Read)')


class LogLinesTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.top = pathlib.Path(directory.name)
        self.document = self.top / 'docs/log-lines.md'

    def write_source(self, text, path='src/panel/Panel.cpp'):
        path = self.top / path
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def edit_document(self, old, new):
        text = self.document.read_text()
        self.assertIn(old, text)
        self.document.write_text(text.replace(old, new))

    def run_tool(self, *arguments):
        return subprocess.run([TOOL, *arguments, self.top], capture_output=True, text=True)

    def update(self):
        result = self.run_tool()
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout

    def assert_accepted(self):
        result = self.run_tool('--check')
        self.assertEqual(result.returncode, 0, result.stderr)

    def assert_refused(self, *messages):
        result = self.run_tool('--check')
        self.assertEqual(result.returncode, 1)
        for message in messages:
            self.assertIn(message, result.stderr)

    def rows(self):
        return [tuple(cell.strip('`') for cell in line[2:].split(' | ')[:2])
                for line in self.document.read_text().split('\n') if ')`' in line]

    # A tree with SOURCE and its document, in order.
    def write_good_tree(self):
        self.write_source(SOURCE)
        self.update()
        self.edit_document('` |  |  |', '` | A cause. | A remedy. |')
        self.assert_accepted()


class Check(LogLinesTest):
    def test_new_rows_have_no_words_and_are_refused(self):
        self.write_source(SOURCE)
        self.update()
        self.assertEqual(self.rows(), [INFO, ERROR])
        self.assert_refused('a row without a cause', INFO[1], ERROR[1])

    def test_an_error_needs_a_remedy(self):
        self.write_good_tree()
        self.edit_document(f'{ERROR[1]}` | A cause. | A remedy. |', f'{ERROR[1]}` | A cause. |  |')
        self.assert_refused('a row without a remedy', ERROR[1])

    def test_a_note_needs_no_remedy(self):
        self.write_good_tree()
        self.edit_document(f'{INFO[1]}` | A cause. | A remedy. |', f'{INFO[1]}` | A cause. |  |')
        self.assert_accepted()

    def test_a_new_line_has_no_row_and_is_given_a_ready_made_one(self):
        self.write_good_tree()
        self.write_source(SOURCE.replace('  return true;', '  log.Warn(L"new ", mode);'))
        row = '| 2 warning | `new {mode}(Panel::Read)` |  |  |'
        self.assert_refused('no row for this line', row)
        text = self.document.read_text()
        self.document.write_text(text + row.replace('` |  |  |', '` | A cause. | A remedy. |\n'))
        self.assert_accepted()

    def test_a_changed_text_is_found(self):
        self.write_good_tree()
        self.write_source(SOURCE.replace('bad mode:', 'wrong mode:'))
        self.assert_refused('no row for this line', 'wrong mode:{mode}',
                            'a row of no line', ERROR[1])

    def test_a_changed_level_is_found(self):
        self.write_good_tree()
        self.write_source(SOURCE.replace('log.Error', 'log.Warn'))
        self.assert_refused(f'| 2 warning | `{ERROR[1]}`', f'| 3 error | `{ERROR[1]}`')

    def test_a_changed_function_name_is_found(self):
        self.write_good_tree()
        self.write_source(SOURCE.replace('log("Panel::Read")', 'log("Panel::Load")'))
        self.assert_refused('(Panel::Load)', '(Panel::Read)')

    def test_a_removed_line_is_found(self):
        self.write_good_tree()
        self.write_source(SOURCE.replace('  log.Info(L"mode:", mode);\n', ''))
        self.assert_refused('a row of no line', INFO[1])

    def test_a_line_in_a_comment_is_none(self):
        self.write_good_tree()
        self.write_source(SOURCE.replace('  log.Info', '  // log.Info'))
        self.assert_refused('a row of no line', INFO[1])

    def test_rows_out_of_order_are_refused(self):
        self.write_good_tree()
        *others, first, second = self.document.read_text().strip().split('\n')
        self.document.write_text('\n'.join([*others, second, first]) + '\n')
        self.assert_refused('not in the order and form')

    def test_a_row_of_another_form_is_refused(self):
        self.write_good_tree()
        self.document.write_text(self.document.read_text() + '| 3 error | no line |  |  |\n')
        self.assert_refused('a row that is none: | 3 error | no line')


class Update(LogLinesTest):
    def test_words_and_introduction_stay(self):
        self.write_good_tree()
        self.edit_document('# Log lines\n', '# Log lines\n\nRead me.\n')
        kept = self.document.read_text()
        self.update()
        self.assertEqual(self.document.read_text(), kept)

    def test_rows_that_go_are_shown_with_their_words(self):
        self.write_good_tree()
        self.write_source(SOURCE.replace('  log.Info(L"mode:", mode);\n', ''))
        self.assertIn(f'`{INFO[1]}` | A cause. | A remedy. |', self.update())
        self.assertEqual(self.rows(), [ERROR])
        self.assert_accepted()

    def test_folders_are_sections_and_functions_are_in_order(self):
        self.write_source(SOURCE)
        self.write_source(SOURCE.replace('Panel::Read', 'Frame::B'), 'src/frame/A.cpp')
        self.write_source(SOURCE.replace('Panel::Read', 'Frame::A'), 'src/frame/B.cpp')
        self.update()
        order = [line.split('(')[-1].split(')')[0]
                 for line in self.document.read_text().split('\n')
                 if line.startswith('## ') or ')`' in line]
        self.assertEqual(order, ['## src/frame', 'Frame::A', 'Frame::A', 'Frame::B', 'Frame::B',
                                 '## src/panel', 'Panel::Read', 'Panel::Read'])


class Forms(LogLinesTest):
    # The statements stand in a function "Class::Method(int value)".
    def assert_lines(self, lines, statements, around=''):
        self.write_source(f'{around}\nvoid Class::Method(int value) {{\n{statements}\n}}\n')
        self.update()
        self.assertEqual(self.rows(), lines)

    def test_each_level(self):
        self.assert_lines(
            [('0 debug', 'd(A::B)'), ('1 info', 'i(A::B)'), ('2 warning', 'w(A::B)'),
             ('3 error', 'e(A::B)'), ('2 warning', 'x(A::B)')], '''
            constexpr FunctionLog log("A::B");
            log.Debug(L"d"); log.Info(L"i"); log.Warn(L"w"); log.Error(L"e");
            log.Write(LogWarn, L"x");''')

    def test_a_call_over_several_lines_with_adjacent_literals(self):
        self.assert_lines([('3 error', 'one two:{value}, three:{(value + 1)}(A::B)')], '''
            FunctionLog("A::B").Error(
                L"one "  // a comment with "quotes" and )
                L"two:",
                value, /* , */ L", three:", (value + 1));''')

    def test_the_name_of_the_function_and_no_message(self):
        self.assert_lines([('1 info', '(Method)')], 'FunctionLog(__func__).Info();')

    def test_values_in_short(self):
        line = '{info.mode} {header.GetType} {info.id} {sizeof value}(A)'
        self.assert_lines([('1 info', line)], '''
            FunctionLog("A").Info(info->mode, L" ", static_cast<int>(header_.GetType()), L" ",
                                  std::string(FieldText(info.id)), L" ", sizeof value);''')

    def test_quotes_brackets_and_escapes(self):
        self.assert_lines([('1 info', r'a\b "c" d\n; {((A)')],
                          r'FunctionLog("A").Info(L"a\\b \"c\" d\n", L"; {(");')

    def test_a_bar_does_not_end_the_cell(self):
        self.assert_lines([('1 info', r'a\|b(A)')], 'FunctionLog("A").Info(L"a|b");')
        self.edit_document('` |  |  |', '` | A cause. |  |')
        self.assert_accepted()

    def test_constants(self):
        self.assert_lines([('1 info', r'here C:\f(A)')], '''
            constexpr wchar_t kText[] = L"here ";
            FunctionLog("A").Info(kText, kFile);''', r'constexpr char kFile[] = "C:\\f";')

    def test_a_choice_of_texts_is_a_line_each(self):
        self.assert_lines([('1 info', 'on!(A)'), ('1 info', 'off!(A)')],
                          'FunctionLog("A").Info(value ? L"on" : L"off", L"!");')

    def test_a_choice_with_a_value_is_a_value(self):
        self.assert_lines([('1 info', '{event.Name}(A)')],
                          'FunctionLog("A").Info(event != nullptr ? event->Name() : L"");')

    def test_the_same_line_twice_is_one(self):
        self.assert_lines([('1 info', 'x(A)')],
                          'FunctionLog("A").Info(L"x"); FunctionLog("A").Info(L"x");')

    def test_a_log_of_the_file(self):
        self.assert_lines([('1 info', 'x(A::B)')], 'kLog.Info(L"x");',
                          'constexpr FunctionLog kLog("A::B");')

    def test_two_logs_in_one_function(self):
        self.assert_lines([('1 info', 'x(A::A)'), ('1 info', 'x(A::B)')], '''
            if (value) { constexpr FunctionLog log("A::A"); log.Info(L"x"); }
            constexpr FunctionLog log("A::B"); log.Info(L"x");''')

    def test_a_helper_writes_for_its_callers(self):
        self.assert_lines(
            [('2 warning', 'what number:{number}(A::A)'),
             ('3 error', 'else number:{number}(A::B)')], '''
            constexpr FunctionLog log("A::A");
            Fail(log, LogWarn, L"what ", value);
            Fail(FunctionLog("A::B"), LogError, L"else ", value + 1);''', '''
            namespace {
            void Fail(const FunctionLog& log, LogLevel level, const wchar_t* what, int number) {
              log.Write(level, what, L"number:", number);
            }
            }''')

    def test_a_helper_of_a_helper_with_a_struct_of_texts_and_a_pack(self):
        self.assert_lines(
            [('3 error', 'none value:{value}(A::A)'), ('3 error', 'short value:{value}(A::A)')], '''
            constexpr FunctionLog log("A::A");
            constexpr Errors errors = {1, L"none ", L"short "};
            Outer(log, errors, L"value:", value);''', '''
            namespace {
            struct Errors { int number; const wchar_t* none; const wchar_t* tooShort; };
            template <typename... Subject>
            void Inner(const FunctionLog& log, const Errors& which, const Subject&... subject) {
              log.Error(which.none, subject...);
              log.Error(which.tooShort, subject...);
            }
            template <typename... Rest>
            void Outer(const FunctionLog& log, const Errors& errors, const Rest&... rest) {
              Inner(log, errors, rest...);
            }
            }''')

    def test_a_helper_that_calls_itself(self):
        self.assert_lines([('3 error', 'a(A)')], 'Fail(L"a", value);', '''
            namespace {
            void Fail(const wchar_t* what, int depth) {
              FunctionLog("A").Error(what);
              if (depth > 0) Fail(what, depth - 1);
            }
            }''')

    def test_a_helper_with_a_comma_in_a_type(self):
        self.assert_lines([('3 error', 'a(A)')], 'Fail(table, L"a");', '''
            namespace {
            void Fail(const std::map<int, int>& table, const wchar_t* what) {
              FunctionLog("A").Error(what);
            }
            }''')

    def test_a_member_that_helps_another_file(self):
        self.write_source('void Class::Fail(const FunctionLog& log) { log.Error(L"x"); }',
                          'src/panel/Fail.cpp')
        self.assert_lines([('3 error', 'x(A::A)')],
                          'constexpr FunctionLog log("A::A"); Fail(log);')

    def test_helpers_of_one_name_in_two_files(self):
        helper = 'namespace { void Fail(const wchar_t* what) { FunctionLog("%s").Error(what); } }\n'
        self.write_source(helper % 'B' + 'void F() { Fail(L"b"); }', 'src/panel/Other.cpp')
        self.assert_lines([('3 error', 'a(A)'), ('3 error', 'b(B)')], 'Fail(L"a");', helper % 'A')

    def test_nxlogger_through_a_function_and_a_lambda(self):
        self.assert_lines(
            [('NxLogger 3 info', 'in(Class::Method)'),
             ('NxLogger 4 error', 'failed:{value}(Class::Method)')], '''
            const auto log = [](const auto&... parts) {
              Log(LOG_MESSAGE_INFO, L"Method", parts...);
            };
            log(L"in");
            Log(LOG_MESSAGE_ERROR, L"Method", L"failed:", value);''', '''
            namespace {
            template <typename... Parts>
            void Log(LOG_MESSAGE_LEVEL level, const wchar_t* method, const Parts&... parts) {
              std::wstringstream line;
              (line << ... << parts) << L"(Class::" << method << L")";
              NxLogger::GetInstance().Log(level, line);
            }
            }''')

    def test_nxlogger_directly(self):
        self.assert_lines([('NxLogger 4 error', 'value:{value}(Class::Method)')], '''
            std::wstringstream line;
            line << L"value:" << value << L"(Class::Method)";
            NxLogger::GetInstance().Log(LOG_MESSAGE_ERROR, line);''')

    def test_functions_among_other_braces(self):
        self.assert_lines([('1 info', 'made(A)'), ('1 info', 'copied(A)'), ('1 info', 'x(A)')],
                          'kLog.Info(L"x");', '''
            extern "C" { int f(); }
            enum Kind : int { A, B };
            constexpr int kTable[][2] = {{1, 2}, {3, 4}};
            constexpr FunctionLog kLog("A");
            class Owner {
             public:
              Owner() : a_(1), b_{2} { kLog.Info(L"made"); }
              Owner& operator=(const Owner&) { kLog.Info(L"copied"); return *this; }
             private:
              int a_ = 0;
              int b_{0};
            };''')

    def test_the_log_itself_is_not_looked_at(self):
        self.write_source('void FunctionLog::Send() { LcdLogMessage(level, text); }',
                          'src/frame/Log.cpp')
        self.assert_lines([('1 info', 'x(A)')], 'FunctionLog("A").Info(L"x");')


class Unreadable(LogLinesTest):
    def assert_unreadable(self, message, statements, around=''):
        self.write_source(f'{around}\nvoid Class::Method(int value) {{\n{statements}\n}}\n')
        for arguments in [], ['--check']:
            result = self.run_tool(*arguments)
            self.assertEqual(result.returncode, 1)
            self.assertRegex(result.stderr, r'^log-lines: src/panel/Panel\.cpp:\d+: ' + message)
        self.assertFalse(self.document.exists())

    def test_a_direct_call(self):
        self.assert_unreadable('LcdLogMessage is called directly', 'LcdLogMessage(3, L"x");')

    def test_an_unknown_log(self):
        self.assert_unreadable('an unknown log: other', 'other.Error(L"x");')
        self.assert_unreadable('an unknown log', '(value ? a : b).Error(L"x");')
        self.assert_unreadable('an unknown log: log', 'auto& log = other; log.Error(L"x");')

    def test_an_unknown_level(self):
        self.assert_unreadable('an unknown level: level',
                               'auto level = LogInfo; FunctionLog("A").Write(level, L"x");')

    def test_a_text_inside_of_an_expression(self):
        self.assert_unreadable('a text inside of an expression',
                               'FunctionLog("A").Info(std::wstring(L"x") + y);')

    def test_a_function_name_that_is_computed(self):
        self.assert_unreadable('a function name that is no literal',
                               'FunctionLog(Name()).Info(L"x");')

    def test_a_helper_without_callers(self):
        self.assert_unreadable('a helper that nobody calls', '',
                               'void Fail(const FunctionLog& log) { log.Error(L"x"); }')

    def test_a_helper_called_without_an_argument(self):
        self.assert_unreadable('Fail without "what"', 'Fail(value);', '''
            void Fail(int value, const wchar_t* what = kWhat) {
              FunctionLog("A").Error(what, value);
            }''')

    def test_a_line_outside_of_a_function(self):
        self.assert_unreadable('a log line outside of a function', '',
                               'int x = FunctionLog("A").Info(L"x");')

    def test_a_macro(self):
        self.assert_unreadable('a log line in a macro', '',
                               '#define FAIL(log, x) \\\n  log.Error(x)')

    def test_a_log_of_an_unknown_form(self):
        self.assert_unreadable('a FunctionLog of an unknown form', 'FunctionLog* log = &other;')

    def test_nxlogger_of_an_unknown_form(self):
        self.assert_unreadable('a call of NxLogger of an unknown form', 'NxLogger& logger = Get();')

    def test_nxlogger_without_a_function_name(self):
        self.assert_unreadable('no function name at the end: x', '''
            std::wstringstream line;
            line << L"x";
            NxLogger::GetInstance().Log(LOG_MESSAGE_INFO, line);''')

    def test_unpaired_brackets(self):
        self.assert_unreadable('a bracket without its partner', '}')
        self.assert_unreadable('a bracket without its partner', '{')


if __name__ == '__main__':
    unittest.main()
