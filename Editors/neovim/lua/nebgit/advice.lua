-- What to do in Neovim after a failure, by its class. The server advises what to do in a terminal;
-- where the status has a key for that, this text replaces the advice.
local clean_tree = "Stage and commit the changes (s and cc in the status), stash them (z), or"
  .. " discard them (x)."

return {
  ["credentials-needed"] = "Try again and enter them, or set up a credential helper of git.",
  ["credentials-refused"] = "Try again, or correct the stored credentials. Many servers require an"
    .. " access token instead of a password.",
  ["remote-ahead"] = "Pull (p in the status), then push again.",
  ["push-stale"] = "Fetch (f in the status), review the new commits, then push again.",
  ["no-upstream"] = "Push the branch (P in the status), which sets its upstream branch.",
  ["no-current-branch"] = "Switch to a branch or create one (b in the status). Continue (rc) or"
    .. " abort (ra) an unfinished rebase first.",
  ["diverged"] = "Merge the other branch (:NEBGit merge BRANCH).",
  ["local-changes"] = clean_tree,
  ["needs-clean-tree"] = clean_tree,
  ["untracked-in-the-way"] = "Move the files away, or stage (s in the status) and commit them.",
  ["conflict"] = "Resolve them in the files, and stage these (s in the status). Then continue an"
    .. " unfinished merge or rebase (rc), or abort it (ra).",
  ["conflict-unresolved"] = "Resolve them in the files, stage these (s in the status), then try"
    .. " again.",
  ["merge-unfinished"] = "Continue (rc in the status) or abort (ra) it.",
  ["nothing-in-progress"] = "The status shows what is unfinished.",
  ["nothing-to-commit"] = "Stage changes first (s in the status).",
}
