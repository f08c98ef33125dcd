"""Mail merge and field update, part of the engine benchmark (bench/engine.py runs it).

Merge: 10,000 records into a one-page letter with our engine, against docxtpl rendering the same
letter (its {{ }} tags) once per record. docxtpl is timed on a sample of records and its rate
scaled to the full count, since rendering 10,000 letters with it takes many minutes; the ratio
compares time per record. Update: every field of a 1,000-page document with 10,000 fields,
against the time to load that document (model built).
"""
import io
import os
import time


def merge(driver, work, records=10000, sample=200):
    fields_tpl, tags_tpl = os.path.join(work, "letter-fields.docx"), os.path.join(work, "letter-tags.docx")
    driver("mergetemplates", fields_tpl, tags_tpl)
    ours = min((driver("merge", fields_tpl, os.path.join(work, "merged.docx"), str(records))[0][0] for _ in range(2)),
               key=lambda x: x["total"])

    from docxtpl import DocxTemplate
    t0 = time.perf_counter()
    for i in range(sample):
        tpl = DocxTemplate(tags_tpl)
        tpl.render({"FirstName": f"Ann{i}", "LastName": "Berg", "Street": f"{i} Harbour Street", "City": "Oslo",
                    "Amount": f"{100 + i % 900}.50", "Due": "31 March 2025", "Account": f"NO93 8601 {i}",
                    "Advisor": "Kari Nordmann"})
        tpl.save(io.BytesIO())
    theirs = (time.perf_counter() - t0) / sample
    per_record = ours["total"] / 1000 / records
    ratio = theirs / per_record
    print(f"mail merge  ours {records} records: {ours['total']:.0f} ms (load {ours['load']:.0f}, merge {ours['merge']:.0f}, "
          f"save {ours['save']:.0f}) = {per_record * 1e6:.0f} us/record")
    print(f"mail merge  docxtpl once per record ({sample} timed): {theirs * 1000:.1f} ms/record, "
          f"{theirs * records:.0f} s for {records}")
    print(f"ratio mail merge docxtpl/ours per record = {ratio:.1f}x  (target >= 10x) {'met' if ratio >= 10 else 'NOT met'}")


def update_fields(driver, work, pages=1000, fields=10000):
    path = os.path.join(work, "fields.docx")
    driver("fieldsdoc", path, str(pages), str(fields))
    runs = [driver("updatefields", path)[0][0] for _ in range(2)]
    best = min(runs, key=lambda x: x["update"] / x["load"])
    ratio = best["update"] / best["load"]
    print(f"update_fields  {best['fields']:.0f} fields on {pages} pages: update {best['update']:.0f} ms, load {best['load']:.0f} ms")
    print(f"ratio update_fields/load = {ratio:.2f}x  (target < 5x) {'met' if ratio < 5 else 'NOT met'}")
