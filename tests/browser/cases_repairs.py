"""The repairs come first, and lead to the findings that they cure."""

import subprocess

from selenium.webdriver.common.by import By

from browser import PHONE, Fabric
from cases_use import current


def cured(fabric):
    """By number of the finding, the repairs without all of which it stays."""
    by = {}
    for step in fabric.repairs:
        for finding in step["cures"]:
            by.setdefault(finding, []).append(step["id"])
    return by


def pressed(page):
    return page.run("return Array.from(document.querySelectorAll('.repair[aria-pressed=true]'),"
                    " (one) => one.dataset.repair)")


def head_of(page, step):
    return page.one(f".repair[data-repair='{step['id']}']")


def cures_of(page, step):
    """The list of what a repair cures, unfolded."""
    row = head_of(page, step).find_element(By.XPATH, "..")
    page.run("const folded = arguments[0].querySelector('details'); folded.open = true;"
             "arguments[0].scrollIntoView()", row)
    page.until("return arguments[0].querySelector('details li') !== null", row)
    return row.find_elements(By.CSS_SELECTOR, "ul button")


def in_words(repairs):
    """As verdicts count them: "3 repairs (2 sure, 1 likely)"."""
    counts = {name: sum(1 for step in repairs if step["class"] == name)
              for name in ("sure", "likely", "ask")}
    classes = ", ".join(f"{count} {name}" for name, count in counts.items() if count)
    return f"{len(repairs)} repair{'' if len(repairs) == 1 else 's'} ({classes})"


def the_verdict_tells_repairs_first(browser):
    fabric = browser.open(browser.fabric("faulty"))
    steps, left = len(fabric.repairs), len(fabric.findings) - len(cured(fabric))
    assert left > 0 and browser.text("#verdict").startswith(
        f"{in_words(fabric.repairs)} would bring {len(fabric.findings)} findings down to ")
    assert browser.text("#repairs-title") == f"{steps} repairs, {left} findings unexplained"
    fabric = browser.open(browser.fabric("swapped"))
    right = f"{in_words(fabric.repairs)} would put this fabric right"
    assert browser.text("#verdict") == right and browser.driver.title.startswith(right)
    assert browser.text("#repairs-title") == f"{len(fabric.repairs)} repairs"
    shown = browser.run("return { ...document.getElementById('repairs').dataset }")
    assert shown == {"count": str(len(fabric.repairs)), "cured": str(len(fabric.findings))}, shown
    browser.open(browser.fabric("one"))
    assert browser.text("#verdict") == "1 repair (1 sure) would put this fabric right"


def the_verdict_says_what_it_depends_on(browser):
    browser.open(browser.fabric("swapped", "--roots", "inferred"))
    assert browser.text("#verdict").endswith(
        " would put this fabric right, if the inferred tree is right")
    fabric = browser.open(browser.with_spare_switch("swapped"))
    assert browser.text("#verdict").endswith(", if the tree is right")
    assert browser.text("#doubt") == fabric.result["roots"]["doubt"]


def what_is_not_listed_is_cured_as_well(browser):
    fabric = browser.open(browser.fabric("swapped", "--max-records", "1"))
    count = len(fabric.findings)
    assert fabric.result["recordsNotListed"] > 0 and len(cured(fabric)) == count
    assert browser.text("#verdict") == f"{in_words(fabric.repairs)} would put this fabric right"


def no_faults_means_that_much_was_checked(browser):
    fabric = browser.open(browser.fabric("clean"))
    links = fabric.document["links"]
    cables = sum(1 for link in links if {link["a"], link["b"]} <= set(fabric.switches))
    assert browser.text("#verdict") == "No faults found"
    assert browser.text("#checked") == (
        f"Checked: {len(fabric.result['ranks'])} levels, {len(fabric.switches)} switches, "
        f"{cables} cables between them and {len(links) - cables} host links.")
    assert not browser.one("#repairs").is_displayed()
    browser.open(browser.fabric("faulty"))
    assert not browser.one("#checked").is_displayed()


def a_repair_names_both_ends_of_its_cables(browser):
    actions = set()
    for name in ("faulty", "swapped", "parallel"):
        fabric = browser.open(browser.fabric(name))
        rows = browser.texts("#repair-list > li")
        assert len(rows) == len(fabric.repairs) > 0
        for step, row in zip(fabric.repairs, rows):
            head = row.split("\n")[:3]
            assert head == [f"{step['id']}.", step["class"], step["action"]], head
            assert step["reason"] in row
            for cable in step["cables"]:
                for end in [*(cable["before"] or []), *(cable["after"] or [])]:
                    assert f"{end['name']} port {end['port']}" in row, row
            assert ("alternative" in row) == (len(step["alternatives"]) > 0)
            assert len(step["cures"]) == 0 or f"cures {len(step['cures'])} finding" in row
            actions.add(step["action"])
    assert {"swap", "move", "connect"} <= actions


def a_repair_lists_what_it_cures(browser):
    fabric = browser.open(browser.fabric("faulty"))
    step = max(fabric.repairs, key=lambda one: len(one["cures"]))
    assert browser.all("#repair-list details button") == []
    links = cures_of(browser, step)
    assert [int(link.get_attribute("data-shows")) for link in links] == step["cures"]
    browser.one("#search").send_keys("no such thing")
    links[-1].click()
    assert current(browser) == str(step["cures"][-1])
    assert f"finding={step['cures'][-1] + 1}" in browser.address()


def a_chosen_repair_is_shown_in_the_picture(browser):
    fabric = browser.open(browser.fabric("faulty"))
    before = browser.picture()
    step = fabric.repairs[1]
    head_of(browser, step).click()
    assert pressed(browser) == [str(step["id"])]
    assert current(browser) == str(step["cures"][0])
    assert browser.picture() != before
    address = browser.address()
    browser.open(fabric, address)
    assert pressed(browser) == [str(step["id"])] and current(browser) == str(step["cures"][0])
    last = fabric.repairs[-1]
    browser.open(fabric, f"#repair={last['id']}")
    assert current(browser) == str(last["cures"][0])
    list_top, list_bottom, top, bottom = browser.run(
        "return [document.getElementById('repair-list'), arguments[0]].flatMap((one) => {"
        "const box = one.getBoundingClientRect(); return [box.top, box.bottom] })",
        head_of(browser, last))
    assert list_top <= top and bottom <= list_bottom
    head_of(browser, last).click()
    assert pressed(browser) == [] and current(browser) is None
    head_of(browser, step).click()
    browser.click("#list .row")
    assert pressed(browser) == []


def a_repair_that_cures_nothing_shows_its_switches(browser):
    def cure_nothing(result):
        for step in result["repairs"]:
            step["cures"] = []

    fabric = browser.open(browser.with_result("faulty", cure_nothing))
    assert browser.all("#repair-list details") == []
    before = browser.picture()
    head_of(browser, fabric.repairs[1]).click()
    assert current(browser) is None and browser.picture() != before


def what_no_repair_explains_comes_first(browser):
    fabric = browser.open(browser.fabric("faulty"))
    by = cured(fabric)
    rows = browser.run("return Array.from(document.querySelectorAll('#list .row'),"
                       " (row) => [Number(row.dataset.finding), row.dataset.curedBy, row.innerText])")
    assert [row[0] for row in rows] == sorted(
        range(len(rows)), key=lambda at: (by.get(at, [0])[0], at))
    for index, ids, text in rows:
        assert ids == " ".join(map(str, by.get(index, [])))
        if index not in by:
            assert "cured by" not in text
        elif len(by[index]) == 1:
            assert text.endswith(f"cured by repair {by[index][0]}")
        else:
            assert f"cured by repairs {by[index][0]}" in text
    assert any(len(ids) > 1 for ids in by.values())
    assert browser.one("#order").get_attribute("value") == "unexplained"
    browser.click("#order option[value='kind']")
    assert "order=kind" in browser.address()
    browser.open(browser.fabric("hosts"))
    assert browser.one("#order").get_attribute("value") == "kind"
    assert browser.all("#order option[value='unexplained']") == []


def repairs_fit_on_a_phone(browser):
    browser.size(PHONE)
    fabric = browser.open(browser.fabric("faulty"))
    cures_of(browser, fabric.repairs[0])
    assert browser.run("return document.documentElement.scrollWidth") <= PHONE[0]


def what_no_cable_cures_is_noted(browser):
    fabric = browser.open(browser.fabric("dead"))
    notes = browser.texts("#repair-list .said")
    assert len(notes) > 0 and notes[0].startswith("Note: a switch is dead or missing: "), notes
    assert not browser.text("#verdict").endswith("would put this fabric right")
    assert len(fabric.repairs) == browser.run("return document.querySelectorAll('[data-repair]').length")


def a_failed_check_tells_the_remedy(browser):
    browser.open(browser.fabric("clean", "--root-regex", "nobody"))
    assert browser.text("#advice").startswith("no switch name matches: name the roots with ")


def a_repair_says_where_its_switches_stand(browser):
    document = browser.generate("one")
    names = [node["name"] for node in document["nodes"] if node["type"] == "switch"]
    rows = [f"{name},R{at},{at % 40}\n" for at, name in enumerate(names)]
    (browser.folder / "places.csv").write_text("name,rack,unit\n" + "".join(rows))
    fabric = browser.open(browser.fabric("one", "--locations", "places.csv"))
    text = browser.text("#repair-list .repair")
    for end in fabric.repairs[0]["cables"][0]["after"]:
        at = names.index(end["name"])
        assert f"{end['name']} port {end['port']} (R{at}, unit {at % 40})" in text, text


def the_date_of_the_dump_is_told(browser):
    document = browser.generate("clean")
    subprocess.run([browser.fabscope, "convert", browser.folder / "clean.json", "-o",
                    browser.folder / "clean.topo"], check=True)
    dump = (browser.folder / "clean.topo").read_text()
    date = "# Topology file: generated on Sat Nov 21 04:39:02 2026\n"
    (browser.folder / "dated.json").write_text(date + dump)
    browser.open(Fabric(browser, "dated", document))
    assert browser.text("#source").endswith(" · dump generated on Sat Nov 21 04:39:02 2026")
