;;; nebgit-selection.el --- What the commands of the status act on  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; The entries, hunks and lines of hunks at point, in the region or below a heading, and the patches
;; of hunks.  A hunk of which the region has some lines only becomes a smaller one with `:partial'.

;;; Code:

(require 'nebgit-status)

(defun nebgit-selection (&optional reverse)
  "Return what to act on, a list of items of one section.
They are those in the region, those of the section if point is on its heading,
or the one at point, which may be a hunk.  REVERSE means that the patches of
hunks will be taken back."
  (if (use-region-p)
      (nebgit-selection--between (region-beginning) (region-end) reverse)
    (let ((item (nebgit-status-item)))
      (if (or (plist-get item :path) (not (assq (plist-get item :section) nebgit-status-sections)))
          (list item)
        (reverse (plist-get nebgit-status--state
                            (intern (format ":%s" (plist-get item :section)))))))))

(defun nebgit-selection--between (begin end reverse)
  "Return the items from BEGIN to END that are in the section of the first.
Hunks of entries that are themselves in the region are left out.  REVERSE is as
of `nebgit-selection'."
  (let* ((items (nebgit-selection--lines begin end))
         (section (plist-get (car items) :section))
         (items (cl-remove-if-not (lambda (item) (eq (plist-get item :section) section)) items))
         (entries (cl-remove-if (lambda (item) (plist-get item :hunk)) items))
         (paths (nebgit-selection-paths entries))
         (hunks (cl-remove-if (lambda (item) (or (not (plist-get item :hunk))
                                                 (member (plist-get item :path) paths)))
                              items)))
    (append (nebgit-selection--hunks hunks reverse) entries)))

(defun nebgit-selection--lines (begin end)
  "Return the items of the lines from BEGIN to END that belong to a path."
  (save-excursion
    (goto-char begin)
    (let (items)
      (while (and (< (point) end) (not (eobp)))
        (let ((item (get-text-property (line-beginning-position) 'nebgit-item)))
          (when (plist-get item :path)
            (push item items)))
        (forward-line 1))
      (nreverse items))))

(defun nebgit-selection-paths (items)
  "Return the paths of ITEMS."
  (delete-dups (delq nil (mapcar (lambda (item) (plist-get item :path)) items))))

;;; Lines of hunks

(defun nebgit-selection--hunks (items reverse)
  "Return one item for each hunk of ITEMS, the lines of hunks.
It has the chosen lines only, or all if only its heading is chosen.  Hunks
without a chosen change are left out.  REVERSE is as of `nebgit-selection'."
  (let (parts)
    (while items
      (let* ((first (car items))
             (same (cl-remove-if-not (lambda (item)
                                       (eq (plist-get item :hunk) (plist-get first :hunk)))
                                     items))
             (numbers (delq nil (mapcar (lambda (item) (plist-get item :line)) same))))
        (push (if numbers (nebgit-selection--part first numbers reverse) first) parts)
        (setq items (nthcdr (length same) items))))
    (delq nil (nreverse parts))))

(defun nebgit-selection--part (item numbers reverse)
  "Return ITEM with the lines NUMBERS of its hunk; nil if none of them is a change.
REVERSE is as of `nebgit-selection'."
  (let* ((lines (nebgit-diff-lines (plist-get item :hunk)))
         (chosen (cl-loop for line in lines
                          for number from 1
                          collect (and (memql number numbers) (nebgit-diff-change-p line))))
         (changes (cl-count-if #'nebgit-diff-change-p lines)))
    (cond
     ((not (memq t chosen)) nil)
     ((= (cl-count t chosen) changes) item)
     (t (append (list :hunk (nebgit-diff-part (plist-get item :hunk) chosen reverse)
                      :partial (cl-count t chosen))
                item)))))

(defun nebgit-selection-patch (items reverse)
  "Return the patch of the hunks of ITEMS, which are of one file.
Nil without hunks.  REVERSE means that it is taken back."
  (let ((hunks (delq nil (mapcar (lambda (item) (plist-get item :hunk)) items))))
    (when hunks
      (nebgit-diff-patch (plist-get (car items) :file) hunks reverse
                         (cl-some (lambda (item) (plist-get item :partial)) items)))))

(provide 'nebgit-selection)
;;; nebgit-selection.el ends here
