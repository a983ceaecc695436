# SPDX-License-Identifier: Apache-2.0
"""What has to hold, counted, and what does not, named with its figure."""


class Bars:
    def __init__(self):
        self.checked, self.failures = 0, []

    def at_most(self, what, value, bar, unit):
        self.checked += 1
        if not value <= bar:
            self.failures.append(f"{what}: {value:.2f} {unit}, at most {bar:g}")
        return value

    def at_least(self, what, value, bar, unit):
        self.checked += 1
        if not value >= bar:
            self.failures.append(f"{what}: {value:.2f} {unit}, at least {bar:g}")
        return value

    def none(self, what, found):
        self.checked += 1
        if found:
            self.failures.append(f"{what}: {', '.join(found)}")

    def summary(self, subject):
        """The failures a line each and the summary; the exit status."""
        for failure in self.failures:
            print(f"FAILED {failure}")
        print(f"{subject}: {self.checked - len(self.failures)} of {self.checked} bars hold")
        return 1 if self.failures else 0
