# SPDX-License-Identifier: Apache-2.0
"""Calls displayctl for one monitor and hands on what it says."""
from __future__ import absolute_import, division, print_function

__metaclass__ = type

import json

from ansible.module_utils.common.text.converters import to_native


def argument_spec(**options):
    """The options of every module, and those of this one."""
    spec = dict(
        monitor=dict(type="str", required=True),
        config=dict(type="path"),
        executable=dict(type="path", default="displayctl"),
        timeout=dict(type="float"),
    )
    spec.update(options)
    return spec


class Displayctl(object):
    """displayctl, as a module's options name it."""

    def __init__(self, module):
        self.module = module
        options = module.params
        program = options["executable"]
        if "/" not in program:
            program = module.get_bin_path(program, required=True)
        self.command = [program, "--json", "--yes", "--quiet", "-m", options["monitor"]]
        if options["config"]:
            self.command += ["-c", options["config"]]
        if options["timeout"]:
            self.command += ["--timeout", str(options["timeout"])]

    def call(self, *arguments):
        """The document of the monitor. Ends the module where there is none."""
        code, output, errors = self.module.run_command(self.command + list(arguments))
        lines = output.splitlines()
        if len(lines) != 1:
            text = "%s is more than one monitor" % self.module.params["monitor"] if lines else errors.strip()
            self.module.fail_json(msg=text or "displayctl ended with %d and said nothing" % code, rc=code)
        try:
            return json.loads(lines[0])
        except ValueError as problem:
            self.module.fail_json(msg="displayctl gave no JSON: %s" % to_native(problem), rc=code, stdout=output)

    def end(self, document, **result):
        """Ends the module: well, or with the outcome that displayctl has told."""
        outcome = document["outcome"]
        result.update(outcome=outcome)
        if outcome in ("ok", "unchanged", "different"):
            self.module.exit_json(**result)
        result.update(msg="%s: %s" % (outcome, document.get("message") or "no reason is given"))
        if outcome == "unreachable":
            # The monitor is the host, though the module has run elsewhere.
            self.module.exit_json(unreachable=True, **result)
        self.module.fail_json(**result)
