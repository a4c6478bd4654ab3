# SPDX-License-Identifier: MIT
"""Tests of the report: python3 -m unittest discover benchmarks -p '*_test.py'"""
import json
import pathlib
import tempfile
import unittest

import performance_page
import report
import windows_comparison


def goal(ratio, slack=0.0, peer="std"):
    return report.Goal("row", peer, ratio, slack)


class Times(unittest.TestCase):
    def test_are_those_of_the_process_with_the_middle_ratio(self):
        slow, lucky, usual = {"KVBase": 30, "std": 20}, {"KVBase": 10, "std": 20}, {"KVBase": 40, "std": 39, "floor": 1}
        with tempfile.TemporaryDirectory() as folder:
            for process, row in enumerate((slow, lucky, usual), start=1):
                path = pathlib.Path(folder, f"results-{process}.json")
                path.write_text(json.dumps({"row": row}), encoding="utf-8")
            self.assertEqual(report.read_times(pathlib.Path(folder)), {"row": usual})

    def test_ratio_is_that_to_a_floor_without_a_peer(self):
        self.assertEqual(report.ratio_to_fastest({"KVBase": 3, "floor": 2}), 1.5)


class Goals(unittest.TestCase):
    LINES = ["# row\tpeer\tratio\tslack", "", "row\tstd\t0.80\t0.5", "row\tstd\t0.40\t0\tAVX-512", "other\tstd\t-\t0"]

    def test_count_where_the_processor_has_what_they_need(self):
        self.assertEqual([(goal.row, goal.ratio, goal.slack) for goal in report.parse_goals(self.LINES, "AVX-512")],
                         [("row", 0.80, 0.5), ("row", 0.40, 0), ("other", None, 0)])

    def test_of_other_processors_do_not_count(self):
        self.assertEqual([goal.ratio for goal in report.parse_goals(self.LINES, "AVX2")], [0.80, None])


class Verdicts(unittest.TestCase):
    def test_limit_itself_is_reached(self):
        self.assertEqual(report.verdict(80, 100, goal(0.80)), "ok")

    def test_missed_by_15_percent_is_near(self):
        self.assertEqual(report.verdict(92, 100, goal(0.80)), "near")

    def test_missed_by_more_is_short(self):
        self.assertEqual(report.verdict(92.1, 100, goal(0.80)), "short")

    def test_slack_counts_once(self):
        self.assertEqual(report.verdict(2.7, 2, goal(1.0, 0.7)), "ok")

    def test_row_for_information_has_none(self):
        self.assertEqual(report.verdict(500, 1, goal(None)), "")


class Comparisons(unittest.TestCase):
    def setUp(self):
        self.read_goals = report.read_goals
        self.faults = []

    def tearDown(self):
        report.read_goals = self.read_goals

    def compare(self, times, *goals):
        report.read_goals = lambda: iter(goals)
        return list(report.compare(times, self.faults))

    def test_floor_is_no_peer(self):
        (result,) = self.compare({"row": {"KVBase": 3, "std": 2, "floor": 1}}, goal(1.0, peer="best"))
        self.assertEqual((result.peer, result.best), ("std", "std"))

    def test_goal_may_be_the_floor(self):
        (result,) = self.compare({"row": {"KVBase": 3, "std": 2, "floor": 3}}, goal(1.0, peer="floor"))
        self.assertEqual((result.verdict, result.best), ("ok", "std"))

    def test_row_that_was_not_measured_is_left_out(self):
        self.assertEqual(self.compare({}, goal(1.0)), [])

    def test_goal_without_its_peer_is_a_fault(self):
        self.assertEqual(self.compare({"row": {"KVBase": 3, "Qt": 2}}, goal(1.0)), [])
        self.assertEqual(self.faults, ["'row' was not measured with std"])


class WindowsVerdicts(unittest.TestCase):
    def compare(self, linux, reasons):
        (row,) = windows_comparison.compare(["row"], {"row": {"KVBase": 3, "std": 2, "C": 1}}, {"row": linux}, reasons)
        return row.peer, row.verdict

    def test_fastest_peer_of_both_systems_counts(self):
        self.assertEqual(self.compare({"KVBase": 2, "std": 2}, {}), ("std", "ok"))

    def test_half_as_much_more_needs_a_reason(self):
        self.assertEqual(self.compare({"KVBase": 0.9, "std": 1}, {}), ("std", "short"))
        self.assertEqual(self.compare({"KVBase": 0.9, "std": 1}, {"row": "why"}), ("std", "reason"))

    def test_without_a_common_peer_there_is_none(self):
        self.assertEqual(self.compare({"KVBase": 1, "Qt": 1}, {}), ("C", ""))


class Page(unittest.TestCase):
    def loss(self, own, reasons, peer=100.0):
        result = report.Result(report.Goal("text: row", "std", 1.0, 0.0), own, {"std": peer}, "std", "", "std")
        return list(performance_page.losses({"text": [result]}, reasons))

    def test_names_what_is_more_than_10_percent_behind(self):
        self.assertEqual(self.loss(110.0, {}), [])
        self.assertEqual(self.loss(111.0, {"text: row": "Why."}), ["- **text: row**: 1.11 of std. Why."])

    def test_a_call_is_no_loss(self):
        self.assertEqual(self.loss(1.6, {}, peer=1.0), [])
        self.assertEqual(len(self.loss(1.8, {}, peer=1.0)), 1)

    def test_bar_ends_at_the_border_of_the_picture(self):
        result = report.Result(report.Goal("text: row", "std", 1.0, 0.0), 1000.0, {"std": 1.0}, "std", "", "std")
        self.assertIn(f'width="{3 * performance_page.UNIT:.1f}"', performance_page.picture([result]))


if __name__ == "__main__":
    unittest.main()
